#include "Recording/RecordingCaptureArea.h"

#include <optional>

namespace {

// Pictures this small are not worth a file, and may be only a border.
constexpr int leastSide = 8;

std::optional<int> displayHolding(QRect window, const QList<QRect> &displays)
{
    if (displays.isEmpty())
        return std::nullopt;
    // The first display is the choice until one holds strictly more of the window.
    int chosen = 0;
    qint64 chosenArea = -1;
    for (int i = 0; i < displays.size(); ++i) {
        const QRect overlap = displays[i].intersected(window);
        const qint64 area = overlap.isEmpty() ? -1 : qint64(overlap.width()) * overlap.height();
        if (area > chosenArea) {
            chosen = i;
            chosenArea = area;
        }
    }
    if (chosenArea <= 0)
        return std::nullopt;
    return chosen;
}

} // namespace

std::variant<RecordingCaptureArea, RecorderError>
RecordingCaptureArea::find(QRect window, QPoint clientOrigin, QRect surface,
                           const QList<QRect> &displays)
{
    const std::optional<int> display = displayHolding(window, displays);
    if (!display)
        return RecorderError::playerDisplayNotFound;
    const QRect screen = displays[*display];
    const QPoint toDisplay = clientOrigin - screen.topLeft();
    const QRect inDisplay =
        surface.translated(toDisplay).intersected(QRect(QPoint(0, 0), screen.size()));
    if (inDisplay.width() <= leastSide || inDisplay.height() <= leastSide)
        return RecorderError::invalidCaptureArea;
    return RecordingCaptureArea{*display, inDisplay, inDisplay.translated(-toDisplay)};
}
