#pragma once

#include "Surface/FaceBox.h"

#include <QFuture>
#include <QImage>
#include <QThreadPool>

#include <optional>
#include <vector>

class FaceDetector;

struct FaceSearchResult
{
    // None when there was no picture to search.
    std::optional<std::vector<FaceBox>> faces;
    // The CPU time the search took on its thread.
    double cpuMs = 0;
};

// Searches pictures for faces on a thread of its own, one picture at a time, so that the window's
// thread never waits for the network. The detector is made on that thread with the first search.
class FaceSearch
{
public:
    FaceSearch();
    // Waits for the search under way, and for the picture it waits for.
    ~FaceSearch();

    // Searches the picture once it arrives, straight from the thread that made it: the window's
    // thread has no part in it.
    QFuture<FaceSearchResult> search(QFuture<QImage> picture);

private:
    QThreadPool m_thread;
    std::shared_ptr<std::unique_ptr<FaceDetector>> m_detector;
    QFuture<FaceSearchResult> m_last;
};
