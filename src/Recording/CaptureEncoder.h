#pragma once

#include "Recording/CapturedPicture.h"
#include "Recording/RecordingOutcome.h"

#include <QSize>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <variant>

class PlayerCaptureWriter;

// The recorder's own thread: it opens the file, converts and encodes what is offered, and
// finishes the file, one job after another in the order they came. Offering never waits: a frame
// that finds frameQueueDepth frames still waiting is dropped, and so is sound beyond two
// seconds. Callbacks run on this thread.
class CaptureEncoder
{
public:
    using Opened = std::function<void(const std::optional<QString> &failure)>;
    using Finished = std::function<void(const RecordingOutcome &outcome)>;
    // The file can no longer be written; told once, on this thread.
    using Failed = std::function<void(const QString &why)>;

    explicit CaptureEncoder(Failed failed);
    // Abandons a writer that was not finished and waits for the thread.
    ~CaptureEncoder();

    void open(const QString &path, QSize size, Opened opened);
    // False when the frame was dropped.
    bool offerFrame(CaptureFrame &&frame);
    void offerAudio(AudioChunk &&chunk);
    // Finishes the writer, or cancels it when it never got a frame; a stop without a writer
    // reports nothing.
    void finish(Finished finished);

    std::int64_t framesOffered() const { return m_framesOffered; }
    std::int64_t framesDropped() const { return m_framesDropped; }

private:
    using Job = std::variant<CaptureFrame, AudioChunk, std::function<void()>>;

    void post(Job &&job);
    void run();
    void handle(Job &job);
    void checkFailure();

    Failed m_failed;
    std::unique_ptr<PlayerCaptureWriter> m_writer; // this thread's only
    bool m_failureTold = false;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Job> m_jobs;
    int m_waitingFrames = 0;
    int m_waitingChunks = 0;
    bool m_quitting = false;
    std::atomic<std::int64_t> m_framesOffered{0};
    std::atomic<std::int64_t> m_framesDropped{0};
    std::thread m_thread;
};
