#include "components/Space.h"

#include <algorithm>
#include <cmath>

namespace trel::components {

namespace {

double dot(const Point& a, const Point& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// Adding 0 turns -0 into 0.
double wholeNanometres(double mm) { return std::round(mm * 1e6) / 1e6 + 0.0; }

}  // namespace

Point operator+(const Point& a, const Point& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Point operator-(const Point& a, const Point& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Point operator*(const Point& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}

double lengthOf(const Point& vector) { return std::hypot(vector.x, vector.y, vector.z); }

Beside beside(const Point& point, const Point& from, const Point& to) {
    const Point line = to - from;
    const double length = lengthOf(line);
    if (length == 0) return {0, lengthOf(point - from)};
    const double along = std::clamp(dot(point - from, line) / length, 0.0, length);
    return {along, lengthOf(point - (from + line * (along / length)))};
}

Point towards(const Point& from, const Point& to, double distance) {
    const Point way = to - from;
    const double length = lengthOf(way);
    if (length <= distance) return to;
    const Point there = from + way * (distance / length);
    return {wholeNanometres(there.x), wholeNanometres(there.y), wholeNanometres(there.z)};
}

}  // namespace trel::components
