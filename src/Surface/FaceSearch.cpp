#include "Surface/FaceSearch.h"

#include "Surface/FaceDetector.h"

#include <QtConcurrent>

#include <ctime>

namespace {

double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

} // namespace

FaceSearch::FaceSearch() : m_detector(std::make_shared<std::unique_ptr<FaceDetector>>())
{
    m_thread.setMaxThreadCount(1);
    // The detector belongs to this one thread for the life of the search.
    m_thread.setExpiryTimeout(-1);
}

FaceSearch::~FaceSearch()
{
    m_thread.waitForDone();
}

bool FaceSearch::isBusy() const
{
    return m_last.isRunning();
}

QFuture<FaceSearchResult> FaceSearch::search(QImage picture)
{
    m_last = QtConcurrent::run(&m_thread, [detector = m_detector, picture = std::move(picture)] {
        const double start = threadCpuMs();
        if (!*detector)
            *detector = std::make_unique<FaceDetector>();
        std::vector<FaceBox> faces = (*detector)->detect(picture);
        return FaceSearchResult{std::move(faces), threadCpuMs() - start};
    });
    return m_last;
}
