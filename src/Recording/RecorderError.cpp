#include "Recording/RecorderError.h"

#include "Recording/RecordingTexts.h"

QString errorDescription(RecorderError error)
{
    switch (error) {
    case RecorderError::playerWindowNotFound:
        return RecordingTexts::playerWindowNotFound.toString();
    case RecorderError::playerDisplayNotFound:
        return RecordingTexts::playerDisplayNotFound.toString();
    case RecorderError::invalidCaptureArea:
        return RecordingTexts::invalidCaptureArea.toString();
    case RecorderError::writerConfigurationFailed:
        break;
    case RecorderError::noFramesCaptured:
        return RecordingTexts::noFramesCaptured.toString();
    }
    return RecordingTexts::writerConfigurationFailed.toString();
}
