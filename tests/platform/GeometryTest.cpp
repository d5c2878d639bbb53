#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "platform/rob/RotationTemplate.h"
#include "platform/rob/Transform.h"
#include "platform/rob/XYZTemplate.h"

namespace {

using Vec3 = trel::rob::Vec3Template<double>;
using Rotation = trel::rob::RotationTemplate<double>;
using Pose = trel::rob::PoseTemplate<double>;
using trel::rob::Transform;
using Matrix = std::array<std::array<double, 3>, 3>;

constexpr double radians = std::numbers::pi / 180.0;

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix m{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k) m[i][j] += a[i][k] * b[k][j];
    return m;
}

// Rz Ry Rx, written out.
Matrix fromAngles(const Vec3& degrees) {
    const double x = degrees.x * radians, y = degrees.y * radians, z = degrees.z * radians;
    const Matrix rx{{{1, 0, 0}, {0, std::cos(x), -std::sin(x)}, {0, std::sin(x), std::cos(x)}}};
    const Matrix ry{{{std::cos(y), 0, std::sin(y)}, {0, 1, 0}, {-std::sin(y), 0, std::cos(y)}}};
    const Matrix rz{{{std::cos(z), -std::sin(z), 0}, {std::sin(z), std::cos(z), 0}, {0, 0, 1}}};
    return product(rz, product(ry, rx));
}

Matrix fromQuaternion(const Rotation& r) {
    const double n = std::sqrt(r.w * r.w + r.x * r.x + r.y * r.y + r.z * r.z);
    const double w = r.w / n, x = r.x / n, y = r.y / n, z = r.z / n;
    return {{{1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)},
             {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)},
             {2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)}}};
}

void expectNear(const Matrix& a, const Matrix& b, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) ASSERT_NEAR(a[i][j], b[i][j], tolerance);
}

void expectNear(const Vec3& a, const Vec3& b, double tolerance = 1e-9) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

Rotation aboutX(double degrees) {
    return {std::cos(degrees * radians / 2), std::sin(degrees * radians / 2), 0, 0};
}
Rotation aboutY(double degrees) {
    return {std::cos(degrees * radians / 2), 0, std::sin(degrees * radians / 2), 0};
}
Rotation aboutZ(double degrees) {
    return {std::cos(degrees * radians / 2), 0, 0, std::sin(degrees * radians / 2)};
}

TEST(Rotation, IsNoneWithoutArguments) {
    EXPECT_EQ(Rotation(), (Rotation{1, 0, 0, 0}));
    expectNear(Rotation().toEulerDegree(), {0, 0, 0});
}

TEST(Rotation, GivesTheAngleAboutEachAxis) {
    expectNear(aboutX(30).toEulerDegree(), {30, 0, 0});
    expectNear(aboutY(-40).toEulerDegree(), {0, -40, 0});
    expectNear(aboutZ(170).toEulerDegree(), {0, 0, 170});
}

TEST(Rotation, ItsAnglesBuildTheSameMatrix) {
    std::mt19937 random(1);
    std::normal_distribution<double> component;
    for (int i = 0; i < 100000; ++i) {
        const Rotation r(component(random), component(random), component(random),
                         component(random));
        const Vec3 angles = r.toEulerDegree();
        ASSERT_LE(std::abs(angles.y), 90.0);
        expectNear(fromAngles(angles), fromQuaternion(r), 1e-7);
    }
}

TEST(Rotation, AgreesWithTheTextbookFormula) {
    std::mt19937 random(2);
    std::normal_distribution<double> component;
    for (int i = 0; i < 100000; ++i) {
        double w = component(random), x = component(random), y = component(random),
               z = component(random);
        const double n = std::sqrt(w * w + x * x + y * y + z * z);
        w /= n, x /= n, y /= n, z /= n;
        const double sine = 2 * (w * y - z * x);
        if (std::abs(sine) > 0.999) continue;
        const Vec3 angles = Rotation(w, x, y, z).toEulerDegree();
        ASSERT_NEAR(angles.x * radians, std::atan2(2 * (w * x + y * z), 1 - 2 * (x * x + y * y)),
                    1e-9);
        ASSERT_NEAR(angles.y * radians, std::asin(sine), 1e-9);
        ASSERT_NEAR(angles.z * radians, std::atan2(2 * (w * z + x * y), 1 - 2 * (y * y + z * z)),
                    1e-9);
    }
}

TEST(Rotation, PutsAllIntoRxWhereTheAxesMeet) {
    const Rotation up = aboutY(90);
    expectNear(up.toEulerDegree(), {0, 90, 0}, 1e-6);
    for (const double sign : {1.0, -1.0}) {
        const double h = std::sqrt(0.5);
        for (const double turn : {10.0, -75.0, 160.0}) {
            // About x by `turn` first, then about y by 90 or -90 degrees.
            const double c = std::cos(turn * radians / 2), s = std::sin(turn * radians / 2);
            const Vec3 angles = Rotation(h * c, h * s, sign * h * c, -sign * h * s).toEulerDegree();
            EXPECT_NEAR(angles.x, turn, 1e-6);
            EXPECT_NEAR(angles.y, sign * 90, 1e-6);
            EXPECT_EQ(angles.z, 0.0);
        }
    }
}

TEST(Rotation, NearThatPointTheAnglesStillBuildTheMatrix) {
    for (const double off : {1e-3, 1e-6, 1e-7, 1e-9, 1e-12, 0.0}) {
        const Transform turn = Transform({{}, aboutZ(25)}) * Transform({{}, aboutY(90 - off)}) *
                               Transform({{}, aboutX(40)});
        const Rotation r = turn.pose().rotation;
        expectNear(fromAngles(r.toEulerDegree()), fromQuaternion(r), 1e-6);
    }
}

TEST(Rotation, OfAnyLengthCountsAsOfLengthOne) {
    const Rotation r = aboutZ(50);
    for (const double length : {1e-200, 1e-3, 7.0, 1e200})
        expectNear(Rotation(r.w * length, 0, 0, r.z * length).toEulerDegree(), {0, 0, 50});
}

TEST(Rotation, OfLengthZeroIsNone) {
    expectNear(Rotation(0, 0, 0, 0).toEulerDegree(), {0, 0, 0}, 0);
}

TEST(Rotation, AndItsNegativeAreTheSame) {
    const Rotation r(0.1, 0.2, 0.3, 0.4);
    expectNear(Rotation(-0.1, -0.2, -0.3, -0.4).toEulerDegree(), r.toEulerDegree());
}

TEST(Transform, LeavesEverythingWhereItIsWithoutAPose) {
    const Vec3 p{1, 2, 3};
    EXPECT_EQ(Transform().apply(p), p);
    EXPECT_EQ(Transform().pose(), Pose{});
}

TEST(Transform, TurnsFirstAndThenMoves) {
    const Transform t({{10, 0, 0}, aboutZ(90)});
    expectNear(t.apply({1, 0, 0}), {10, 1, 0});
}

TEST(Transform, AProductIsOneAfterTheOther) {
    const Transform a({{1, 2, 3}, Rotation(0.1, 0.2, 0.3, 0.4)});
    const Transform b({{-4, 5, 6}, Rotation(0.5, -0.2, 0.1, 0.9)});
    const Vec3 p{7, 8, 9};
    expectNear((a * b).apply(p), a.apply(b.apply(p)));
}

TEST(Transform, TheInverseUndoes) {
    const Transform a({{1, 2, 3}, Rotation(0.1, 0.2, 0.3, 0.4)});
    const Vec3 p{7, 8, 9};
    expectNear(a.inverse().apply(a.apply(p)), p);
    expectNear((a * a.inverse()).apply(p), p);
}

TEST(Transform, ARotationOfLengthZeroTurnsNothing) {
    expectNear(Transform({{1, 0, 0}, Rotation(0, 0, 0, 0)}).apply({1, 2, 3}), {2, 2, 3});
}

TEST(Geometry, IsZeroWithoutArguments) {
    EXPECT_EQ(Vec3(), (Vec3{0, 0, 0}));
    EXPECT_EQ(trel::rob::XYZTemplate<double>(), (trel::rob::XYZTemplate<double>{0, 0, 0}));
    EXPECT_EQ(Pose().rotation.w, 1.0);
}

}  // namespace
