#pragma once

// Where mpv puts the picture in the target it draws into, in the terms of its own options:
// video-zoom (log2 of the scale after the picture is fitted into the target), video-align-x/y
// (−1 puts the picture's left or top edge at the target's) and video-pan-x/y (shares of the
// scaled picture's width and height). The default is mpv's own: fitted and centred.
struct VideoPlacement
{
    double zoom = 0;
    double alignX = 0;
    double alignY = 0;
    double panX = 0;
    double panY = 0;

    friend bool operator==(const VideoPlacement &, const VideoPlacement &) = default;
};
