#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

class ContentView;
class PlayerHostingView;

// The main window's own state as the control socket reads and writes it: the fields, the sidebar,
// the search and filters, the display mode (by its title, e.g. "Portrait Fill"), the portrait
// modes' horizontal pan and full screen.
class ContentControlProperties
{
public:
    explicit ContentControlProperties(ContentView &content) : m_content(content) {}

    static bool isKnown(const QString &name);
    // Nothing for a name that is not one of these.
    std::optional<QJsonValue> get(const QString &name) const;
    // The reason a value was refused; nothing when it was applied.
    std::optional<QString> set(const QString &name, const QJsonValue &value);

private:
    // The video view, which keeps the pan.
    PlayerHostingView *hostingView() const;

    ContentView &m_content;
};
