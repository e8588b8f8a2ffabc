#include "Surface/FaceSearch.h"

#include "Base/ThreadCpuTime.h"
#include "Surface/FaceDetector.h"

#include <QtConcurrent>

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
