#include "Recording/PulseSystemAudioSource.h"

#include "Base/AppIdentity.h"
#include "Recording/CaptureClock.h"

#include <pulse/error.h>
#include <pulse/simple.h>

#include <memory>

namespace {

constexpr int sampleRate = 48000;
constexpr int channels = 2;
// Small reads keep the stamps close to when the sound was heard.
constexpr int framesPerRead = sampleRate / 100;
constexpr const char *defaultMonitor = "@DEFAULT_MONITOR@";

struct SimpleDeleter
{
    void operator()(pa_simple *stream) const { pa_simple_free(stream); }
};
using SimpleStream = std::unique_ptr<pa_simple, SimpleDeleter>;

QString pulseError(int code)
{
    return QString::fromUtf8(pa_strerror(code));
}

} // namespace

PulseSystemAudioSource::~PulseSystemAudioSource()
{
    stop();
}

void PulseSystemAudioSource::start(Deliver deliver, Failed failed)
{
    stop();
    m_stopping = false;
    m_thread =
        std::thread(&PulseSystemAudioSource::run, this, std::move(deliver), std::move(failed));
}

void PulseSystemAudioSource::stop()
{
    m_stopping = true;
    if (m_thread.joinable())
        m_thread.join();
}

void PulseSystemAudioSource::run(Deliver deliver, Failed failed)
{
    const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, sampleRate, channels};
    const uint32_t readBytes = framesPerRead * channels * sizeof(float);
    // The server hands over data in reads of this size, so each arrives as soon as it is heard.
    const pa_buffer_attr buffering{uint32_t(-1), uint32_t(-1), uint32_t(-1), uint32_t(-1),
                                   readBytes};
    int error = 0;
    const QByteArray name = AppIdentity::displayName.toUtf8();
    SimpleStream stream(pa_simple_new(nullptr, name.constData(), PA_STREAM_RECORD, defaultMonitor,
                                      "Recording", &format, nullptr, &buffering, &error));
    if (!stream) {
        failed(pulseError(error));
        return;
    }
    while (!m_stopping) {
        AudioChunk chunk;
        chunk.samples.resize(size_t(framesPerRead) * channels);
        if (pa_simple_read(stream.get(), chunk.samples.data(), readBytes, &error) < 0) {
            failed(pulseError(error));
            return;
        }
        const std::int64_t now = CaptureClock::now();
        const pa_usec_t unread = pa_simple_get_latency(stream.get(), &error);
        // The chunk ends where the sound still waiting in the server begins.
        const std::int64_t duration = std::int64_t(framesPerRead) * 1'000'000'000 / sampleRate;
        chunk.time = now - std::int64_t(unread == pa_usec_t(-1) ? 0 : unread) * 1000 - duration;
        deliver(std::move(chunk));
    }
}
