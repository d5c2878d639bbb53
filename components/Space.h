#pragma once

#include "platform/rob/Vec3Template.h"

/// Points, ways and distances in a station, in mm.
namespace trel::components {

using Point = rob::Vec3Template<double>;  // in mm

/// Of the simulation clock, which speeds in mm/s are multiplied with.
inline constexpr double microsecondsPerSecond = 1e6;

Point operator+(const Point& a, const Point& b);
Point operator-(const Point& a, const Point& b);
Point operator*(const Point& a, double factor);
double lengthOf(const Point& vector);

/// Where a point stands beside the straight line from one point to another.
struct Beside {
    double along;  // from the first point to the place on the line next to it
    double away;   // from that place to the point
};
Beside beside(const Point& point, const Point& from, const Point& to);

/// `from`, moved by `distance` towards `to` but not beyond it. Places are whole
/// nanometres: a long way in small steps ends in a text that people can read.
Point towards(const Point& from, const Point& to, double distance);

}  // namespace trel::components
