#include "UI/PlayerTheme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace {

const char *const styleSheet = R"(
#Sidebar { background: #1c1c1f; border-right: 1px solid #2c2c30; }
#PlayerArea, #PlayerControlBar { background: #111113; }
#PlayerControlBar { border-top: 1px solid #26262a; border-radius: 0; }
QLabel#sectionHeader { color: #8e8e96; font-size: 11px; font-weight: 600; letter-spacing: 1px; }
QLabel#caption { color: #8e8e96; font-size: 11px; }
QLabel#time { color: #c7c7cc; font-family: monospace; }
QLabel#errorMessage { background: rgba(160, 30, 30, 215); color: white; border-radius: 8px;
                      padding: 10px 14px; }
QFrame#playbackFailure { background: rgba(40, 40, 44, 235); color: white; border-radius: 8px;
                         border: 1px solid rgba(255, 105, 97, 180); }
QLabel#toast { background: rgba(40, 40, 44, 225); color: white; border-radius: 14px;
               padding: 7px 14px; }
QLabel#refusal { color: #ff6961; }
QLabel#sheetTitle { font-size: 15px; font-weight: 600; }
QLineEdit { background: #2a2a2e; border: 1px solid #3a3a3f; border-radius: 6px;
            padding: 4px 6px; color: #f2f2f7; selection-background-color: #0a84ff; }
QLineEdit:focus { border-color: #0a84ff; }
QPushButton { background: #3a3a3f; border: none; border-radius: 6px; padding: 5px 10px;
              color: #f2f2f7; }
QPushButton:hover { background: #48484e; }
QPushButton:disabled { color: #6e6e73; background: #2c2c30; }
QPushButton#prominent { background: #0a84ff; font-weight: 600; }
QPushButton#prominent:hover { background: #3a9bff; }
QPushButton#small { padding: 3px 8px; font-size: 12px; }
QToolButton { border: none; border-radius: 6px; padding: 3px; color: #f2f2f7; }
QToolButton:hover { background: rgba(255, 255, 255, 26); }
QToolButton:checked, QToolButton#section:checked { background: rgba(10, 132, 255, 90); }
QToolButton#section { padding: 5px 8px; background: #2a2a2e; }
QToolButton#prominent { background: rgba(255, 255, 255, 30); border-radius: 14px; padding: 5px; }
QToolButton#filterMenu { background: #2a2a2e; padding: 4px 8px; text-align: left; }
QListView#channels { background: transparent; border: none; }
QFrame#divider { background: #3a3a3f; }
QToolButton#filterMenu { padding-right: 18px; }
QToolButton#filterMenu::menu-indicator { subcontrol-origin: padding;
                                         subcontrol-position: center right; right: 6px; }
QScrollBar:vertical { background: transparent; width: 8px; margin: 0; }
QScrollBar::handle:vertical { background: #48484e; border-radius: 4px; min-height: 24px; }
QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }
QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }
QSlider::groove:horizontal { height: 4px; background: #3a3a3f; border-radius: 2px; }
QSlider::sub-page:horizontal { background: #0a84ff; border-radius: 2px; }
QSlider::handle:horizontal { background: #f2f2f7; width: 12px; height: 12px; margin: -4px 0;
                             border-radius: 6px; }
QMenu { background: #2a2a2e; color: #f2f2f7; border: 1px solid #3a3a3f; }
QMenu::item:selected { background: #0a84ff; }
)";

QPalette darkPalette()
{
    QPalette palette;
    const QColor window(28, 28, 31);
    const QColor base(42, 42, 46);
    const QColor text(242, 242, 247);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(58, 58, 63));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Highlight, QColor(10, 132, 255));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(142, 142, 150));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(110, 110, 115));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(110, 110, 115));
    return palette;
}

} // namespace

void PlayerTheme::apply(QApplication &application)
{
    if (QStyle *fusion = QStyleFactory::create(QStringLiteral("Fusion")))
        application.setStyle(fusion);
    application.setPalette(darkPalette());
    application.setStyleSheet(QString::fromUtf8(styleSheet));
}
