#pragma once

// A face found in a picture: its box in fractions of the picture's width and height, origin at
// the top left, as the detector reported it.
struct FaceBox
{
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double area() const { return width * height; }
    double horizontalMidpoint() const { return x + width / 2; }
    bool operator==(const FaceBox &) const = default;
};
