#include "Recording/CaptureEncoder.h"

#include "Recording/PlayerCaptureWriter.h"
#include "Recording/RecordingEncoding.h"

CaptureEncoder::CaptureEncoder(Failed failed)
    : m_failed(std::move(failed)), m_thread(&CaptureEncoder::run, this)
{}

CaptureEncoder::~CaptureEncoder()
{
    {
        std::lock_guard lock(m_mutex);
        m_quitting = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void CaptureEncoder::open(const QString &path, QSize size, Opened opened)
{
    post(std::function<void()>([this, path, size, opened = std::move(opened)] {
        m_writer.reset();
        m_failureTold = false;
        auto created = PlayerCaptureWriter::create(path, size);
        if (auto *failure = std::get_if<QString>(&created)) {
            opened(*failure);
            return;
        }
        m_writer = std::move(std::get<std::unique_ptr<PlayerCaptureWriter>>(created));
        opened(std::nullopt);
    }));
}

bool CaptureEncoder::offerFrame(CaptureFrame &&frame)
{
    ++m_framesOffered;
    {
        std::lock_guard lock(m_mutex);
        if (m_waitingFrames >= RecordingEncoding::frameQueueDepth) {
            ++m_framesDropped;
            return false;
        }
        ++m_waitingFrames;
        m_jobs.emplace_back(std::move(frame));
    }
    m_wake.notify_one();
    return true;
}

void CaptureEncoder::offerAudio(AudioChunk &&chunk)
{
    {
        std::lock_guard lock(m_mutex);
        if (m_waitingChunks >= RecordingEncoding::audioQueueChunks)
            return;
        ++m_waitingChunks;
        m_jobs.emplace_back(std::move(chunk));
    }
    m_wake.notify_one();
}

void CaptureEncoder::finish(Finished finished)
{
    post(std::function<void()>([this, finished = std::move(finished)] {
        std::unique_ptr<PlayerCaptureWriter> writer = std::move(m_writer);
        if (writer)
            finished(writer->finish());
    }));
}

void CaptureEncoder::post(Job &&job)
{
    {
        std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_wake.notify_one();
}

void CaptureEncoder::run()
{
    for (;;) {
        Job job;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_quitting || !m_jobs.empty(); });
            if (m_jobs.empty())
                break;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
            if (std::holds_alternative<CaptureFrame>(job))
                --m_waitingFrames;
            else if (std::holds_alternative<AudioChunk>(job))
                --m_waitingChunks;
        }
        handle(job);
    }
    // A writer never finished (the application quit while recording) leaves no broken file.
    if (m_writer)
        m_writer->cancel();
}

void CaptureEncoder::handle(Job &job)
{
    if (auto *action = std::get_if<std::function<void()>>(&job)) {
        (*action)();
        return;
    }
    if (!m_writer)
        return;
    if (auto *frame = std::get_if<CaptureFrame>(&job))
        m_writer->appendVideo(*frame);
    else if (auto *chunk = std::get_if<AudioChunk>(&job))
        m_writer->appendAudio(*chunk);
    checkFailure();
}

void CaptureEncoder::checkFailure()
{
    if (m_failureTold || !m_writer->failure())
        return;
    m_failureTold = true;
    m_failed(*m_writer->failure());
}
