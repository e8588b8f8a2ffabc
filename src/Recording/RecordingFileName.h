#pragma once

#include "Recording/PlayerRecordingQuality.h"

#include <QDateTime>
#include <QString>

// The local date and time as "2024-05-01 20-15-03": sortable, and valid in a file name
// everywhere. Western digits whatever the user's locale.
QString recordingTimestamp(const QDateTime &at);

// "Velm Player Pro Normal Recording 2024-05-01 20-15-03.mp4"
QString proposedRecordingName(PlayerRecordingQuality quality, const QDateTime &at);
