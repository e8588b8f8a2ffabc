#pragma once

#include <QString>

// Why a recording could not start or could not be completed, each with the text the user sees.
enum class RecorderError
{
    playerWindowNotFound,
    playerDisplayNotFound,
    invalidCaptureArea,
    writerConfigurationFailed,
    noFramesCaptured,
};

QString errorDescription(RecorderError error);
