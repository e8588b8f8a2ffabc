#pragma once

// Where the recorder is: the control bar offers a quality while idle, waits while preparing, and
// offers stopping while recording or stopping.
enum class PlayerRecordingState
{
    idle,
    preparing,
    recording,
    stopping,
};

inline bool isRecording(PlayerRecordingState state)
{
    return state == PlayerRecordingState::recording || state == PlayerRecordingState::stopping;
}
