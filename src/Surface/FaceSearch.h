#pragma once

#include "Surface/FaceBox.h"

#include <QFuture>
#include <QImage>
#include <QThreadPool>

#include <memory>
#include <vector>

class FaceDetector;

struct FaceSearchResult
{
    std::vector<FaceBox> faces;
    // The CPU time the search took on its thread.
    double cpuMs = 0;
};

// Searches pictures for faces on a thread of its own, one picture at a time, so that the window's
// thread never waits for the network. The detector is made on that thread with the first search.
class FaceSearch
{
public:
    FaceSearch();
    // Waits for a search under way.
    ~FaceSearch();

    // Whether a search is under way; a new one then waits behind it.
    bool isBusy() const;
    QFuture<FaceSearchResult> search(QImage picture);

private:
    QThreadPool m_thread;
    std::shared_ptr<std::unique_ptr<FaceDetector>> m_detector;
    QFuture<FaceSearchResult> m_last;
};
