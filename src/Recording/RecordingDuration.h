#pragma once

#include <QString>
#include <QStringView>

#include <optional>

// The automatic stop time a user types, such as "30m", "1.2hr" or "1,5 h": a number and a unit of
// hours or minutes (a bare number is refused, since it would be unclear which). Valid from 1 s to
// 999 hours; anything else is nothing.
std::optional<double> parseRecordingDuration(QStringView text);

// Whole seconds, truncated: "00:07", "59:59", from an hour on "1:02:03". Negative counts as 0.
QString formatDuration(double seconds);

// The floating panel's label: the running time, and with an automatic stop the time left.
QString recordingPanelText(double elapsed, std::optional<double> stopAfter);
