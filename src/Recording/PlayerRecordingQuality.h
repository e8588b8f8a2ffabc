#pragma once

// The two recording qualities the control bar offers.
enum class PlayerRecordingQuality
{
    normal,
    hd,
};
