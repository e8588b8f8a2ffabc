#include "Surface/FaceSearch.h"

#include "Base/ThreadCpuTime.h"
#include "Surface/FaceDetector.h"

FaceSearch::FaceSearch() : m_detector(std::make_shared<std::unique_ptr<FaceDetector>>())
{
    m_thread.setMaxThreadCount(1);
    // The detector belongs to this one thread for the life of the search.
    m_thread.setExpiryTimeout(-1);
}

FaceSearch::~FaceSearch()
{
    // A picture still on its way would start its search on this object's thread pool.
    m_last.waitForFinished();
    m_thread.waitForDone();
}

QFuture<FaceSearchResult> FaceSearch::search(QFuture<QImage> picture)
{
    m_last = picture.then(&m_thread, [detector = m_detector](const QImage &frame) {
        if (frame.isNull())
            return FaceSearchResult{};
        const double start = threadCpuMs();
        if (!*detector)
            *detector = std::make_unique<FaceDetector>();
        std::vector<FaceBox> faces = (*detector)->detect(frame);
        return FaceSearchResult{std::move(faces), threadCpuMs() - start};
    });
    return m_last;
}
