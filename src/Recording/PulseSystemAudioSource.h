#pragma once

#include "Recording/SystemAudioSource.h"

#include <atomic>
#include <thread>

// The system's sound from the monitor of the sound server's default output, through PulseAudio's
// client library (PipeWire's pulse server answers it too). The server is the one PULSE_SERVER
// names, else the user's own.
class PulseSystemAudioSource : public SystemAudioSource
{
public:
    PulseSystemAudioSource() = default;
    ~PulseSystemAudioSource() override;

    void start(Deliver deliver, Failed failed) override;
    void stop() override;

private:
    void run(Deliver deliver, Failed failed);

    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};
