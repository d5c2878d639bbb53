#include <array>
#include <cmath>
#include <iomanip>
#include <locale>
#include <numbers>
#include <random>
#include <sstream>
#include <stdexcept>

#include "platform/sdf/ValueText.h"
#include "tests/smartcomp/Cell.h"
#include "tests/support/CommaNumbers.h"

namespace trel::test {

namespace {

// Numbers are shown as the global locale writes them: here as the classic one.
class PropertyDisplayTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        before_ = std::locale::global(std::locale::classic());
        lamp_ = &Draft("Plain", 10, "Lamp").make<Plain>();
    }
    void TearDown() override {
        std::locale::global(before_);
        CellTest::TearDown();
    }

    // What a property of this type and value text shows.
    std::string shown(const std::string& type, const std::string& value,
                      const std::string& unit = "") {
        const unsigned id = nextId_++;
        const auto element = propertyElement(id, "Text", type, value, unit);
        Property* const p = Property::Create(lamp_, lamp_->element()->append(element));
        freshLog();
        const std::string display = p->getDisplayValue();
        EXPECT_EQ(log().lines(), Lines{}) << "showing a value writes nothing";
        EXPECT_EQ(p->value(), value);
        return display;
    }

    // The quaternion text whose Euler angles, R = Rz Ry Rx, are these degrees.
    static std::string orient(double rx, double ry, double rz) {
        const double half = std::numbers::pi / 360.0;
        const double cx = std::cos(rx * half), sx = std::sin(rx * half);
        const double cy = std::cos(ry * half), sy = std::sin(ry * half);
        const double cz = std::cos(rz * half), sz = std::sin(rz * half);
        std::string text;
        for (const double n : {cx * cy * cz + sx * sy * sz, sx * cy * cz - cx * sy * sz,
                               cx * sy * cz + sx * cy * sz, cx * cy * sz - sx * sy * cz}) {
            if (!text.empty()) text += ' ';
            text += sdf::valuetext::render(std::any(n));
        }
        return text;
    }

private:
    std::locale before_;
    Plain* lamp_ = nullptr;
    unsigned nextId_ = 1;
};

}  // namespace

// ---- Worked examples

TEST_F(PropertyDisplayTest, Double12Point5InMm) {
    EXPECT_EQ(shown("Double", "12.5", "mm"), "12.50 mm");
}
TEST_F(PropertyDisplayTest, DoubleMinus3InSeconds) {
    EXPECT_EQ(shown("Double", "-3", "s"), "-3.00 s");
}
TEST_F(PropertyDisplayTest, Double7WithoutUnitEndsInABlank) {
    EXPECT_EQ(shown("Double", "7"), "7.00 ");
}
TEST_F(PropertyDisplayTest, Bool0IsFalse) { EXPECT_EQ(shown("Bool", "0"), "False"); }
TEST_F(PropertyDisplayTest, Bool1IsTrue) { EXPECT_EQ(shown("Bool", "1"), "True"); }
TEST_F(PropertyDisplayTest, Vector3OfWholeNumbers) {
    EXPECT_EQ(shown("Vector3", "100 200 300"), "100, 200, 300 mm");
}
TEST_F(PropertyDisplayTest, Vector3WithOneFraction) {
    EXPECT_EQ(shown("Vector3", "100 200.5 300"), "100.00, 200.50, 300.00 mm");
}
TEST_F(PropertyDisplayTest, OrientOfTheIdentity) {
    EXPECT_EQ(shown("Orient", "1 0 0 0"), "0, 0, 0 deg");
}
TEST_F(PropertyDisplayTest, Orient90Point0004And0And45) {
    EXPECT_EQ(shown("Orient", orient(90.0004, 0, 45)), "90, 0, 45 deg");
}
TEST_F(PropertyDisplayTest, Orient12Point5AndMinus0Point0004And1) {
    EXPECT_EQ(shown("Orient", orient(12.5, -0.0004, 1)), "12.50, 0.00, 1.00 deg");
}
TEST_F(PropertyDisplayTest, ObjectId0IsNone) { EXPECT_EQ(shown("ObjectId", "0"), "None"); }
TEST_F(PropertyDisplayTest, Int32AsItStands) { EXPECT_EQ(shown("Int32", "42"), "42"); }

// ---- Every rule

TEST_F(PropertyDisplayTest, FiveTypesShowTheirTextUnchanged) {
    for (const char* type : {"Int32", "String", "ReferenceFrame", "Index", "Error"})
        for (const char* value : {"", " 0042 ", "1.50", "text"})
            EXPECT_EQ(shown(type, value, "mm"), value) << type;
}

TEST_F(PropertyDisplayTest, ObjectIdShowsTheNameOfTheObject) {
    enter<Thing>(20, "Pallet");
    EXPECT_EQ(shown("ObjectId", "20"), "Pallet");
    EXPECT_EQ(shown("ObjectId", " 20 or so"), "Pallet");
    EXPECT_EQ(shown("ObjectId", "10"), "Lamp");
}

TEST_F(PropertyDisplayTest, ObjectIdThatTheManagerDoesNotKnowShowsNone) {
    EXPECT_EQ(shown("ObjectId", "999"), "None");
}

TEST_F(PropertyDisplayTest, ObjectId0IsNobodysWhateverTheManagerHolds) {
    enter<Thing>(0, "Nobody");
    EXPECT_EQ(shown("ObjectId", "0"), "None");
}

TEST_F(PropertyDisplayTest, ObjectIdOfAnEmptyEntryShowsNone) {
    enterObject(20, nullptr);
    EXPECT_EQ(shown("ObjectId", "20"), "None");
}

TEST_F(PropertyDisplayTest, ObjectIdReleasesTheLockOfTheTable) {
    enter<Thing>(20, "Pallet");
    shown("ObjectId", "20");
    shown("ObjectId", "999");
    ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
    sdf::SdfManager::inst()->mutex().unlock();
}

TEST_F(PropertyDisplayTest, ObjectIdTextWithoutDigitsThrows) {
    expectThrow<std::invalid_argument>(noStoul, [&] { shown("ObjectId", "Pallet"); });
    expectThrow<std::invalid_argument>(noStoul, [&] { shown("ObjectId", ""); });
    expectThrow<std::out_of_range>(stoulRange, [&] { shown("ObjectId", "4294967296"); });
}

TEST_F(PropertyDisplayTest, OnlyTheOneCharacter0IsFalse) {
    for (const char* value : {"", "false", "False", "00", "0 ", " 0", "0.0", "-0", "2"})
        EXPECT_EQ(shown("Bool", value), "True") << value;
}

TEST_F(PropertyDisplayTest, DoubleIsRoundedToTwoPlaces) {
    EXPECT_EQ(shown("Double", "1234567.891", "mm"), "1234567.89 mm");
    EXPECT_EQ(shown("Double", "0.005", "mm"), "0.01 mm");
    EXPECT_EQ(shown("Double", "1e3", "mm"), "1000.00 mm");
    EXPECT_EQ(shown("Double", "-0.001", "mm"), "-0.00 mm");
}

TEST_F(PropertyDisplayTest, DoubleTextIsReadUpToItsFirstStrangeCharacter) {
    EXPECT_EQ(shown("Double", " \t2.5abc", "s"), "2.50 s");
    EXPECT_EQ(shown("Double", "2,5", "s"), "2.00 s");
    EXPECT_EQ(shown("Double", "+.5", "s"), "0.50 s");
    EXPECT_EQ(shown("Double", "1e", "s"), "1.00 s");
    EXPECT_EQ(shown("Double", "0x10", "s"), "16.00 s");
}

TEST_F(PropertyDisplayTest, DoubleTextMayBeHexadecimal) {
    EXPECT_EQ(shown("Double", "0X1.8p1"), "3.00 ");
    EXPECT_EQ(shown("Double", "-0xA"), "-10.00 ");
    EXPECT_EQ(shown("Double", "+0xa.8"), "10.50 ");
    for (const char* value : {"0x", "0xg", "0x-1", "0x+1"})
        EXPECT_EQ(shown("Double", value), "0.00 ") << "the 0 in front of it";
    expectThrow<std::out_of_range>(stodRange, [&] { shown("Double", "0x1p5000"); });
}

TEST_F(PropertyDisplayTest, DoubleTextWithoutANumberThrows) {
    for (const char* value : {"", "  ", "abc", "-", ".", "e5", "- 1", "+-1"})
        expectThrow<std::invalid_argument>(noStod, [&] { shown("Double", value); });
}

TEST_F(PropertyDisplayTest, DoubleBeyondTheRangeThrows) {
    for (const char* value : {"1e400", "-1e400", "1e999999999999"})
        expectThrow<std::out_of_range>(stodRange, [&] { shown("Double", value); });
}

TEST_F(PropertyDisplayTest, DoubleThatThrowsReadsAgainLater) {
    expectThrow<std::out_of_range>(stodRange, [&] { shown("Double", "1e400"); });
    EXPECT_EQ(shown("Double", "1"), "1.00 ");
}

TEST_F(PropertyDisplayTest, Vector3IsAlwaysInMm) {
    EXPECT_EQ(shown("Vector3", "1 2 3", "inch"), "1, 2, 3 mm");
}

TEST_F(PropertyDisplayTest, Vector3IsWholeOnlyIfItIsExactly) {
    EXPECT_EQ(shown("Vector3", "1 2 3.0000001"), "1.00, 2.00, 3.00 mm");
    EXPECT_EQ(shown("Vector3", "0.0000001 2 3"), "0.00, 2.00, 3.00 mm");
    EXPECT_EQ(shown("Vector3", "1 1e3 -3.0"), "1, 1000, -3 mm");
}

TEST_F(PropertyDisplayTest, Vector3KeepsItsNegativeZero) {
    EXPECT_EQ(shown("Vector3", "-0 0 0"), "-0, 0, 0 mm");
    EXPECT_EQ(shown("Vector3", "-0.001 0 0"), "-0.00, 0.00, 0.00 mm");
}

TEST_F(PropertyDisplayTest, Vector3NumbersAreSeparatedByWhiteSpace) {
    EXPECT_EQ(shown("Vector3", "  1\t2\n3  4"), "1, 2, 3 mm");
}

TEST_F(PropertyDisplayTest, Vector3NumbersThatAreNotReadCountAs0) {
    EXPECT_EQ(shown("Vector3", ""), "0, 0, 0 mm");
    EXPECT_EQ(shown("Vector3", "5"), "5, 0, 0 mm");
    EXPECT_EQ(shown("Vector3", "5 6"), "5, 6, 0 mm");
    EXPECT_EQ(shown("Vector3", "5 x 7"), "5, 0, 0 mm");
    EXPECT_EQ(shown("Vector3", "x 6 7"), "0, 0, 0 mm");
    EXPECT_EQ(shown("Vector3", "1, 2, 3"), "1, 0, 0 mm");
}

TEST_F(PropertyDisplayTest, OneAngleThatIsNotWholeShowsPlacesInAllThree) {
    EXPECT_EQ(shown("Orient", orient(12.5, 0, 0)), "12.50, 0.00, 0.00 deg");
    EXPECT_EQ(shown("Orient", orient(0, 12.5, 0)), "0.00, 12.50, 0.00 deg");
    EXPECT_EQ(shown("Orient", orient(0, 0, 12.5)), "0.00, 0.00, 12.50 deg");
}

TEST_F(PropertyDisplayTest, OrientOfTheIdentityNeverShowsAMinusSign) {
    for (const char* value : {"1 0 0 0", "1 -0 -0 -0", "-1 0 0 0", "1 -1e-6 -1e-6 -1e-6"})
        EXPECT_EQ(shown("Orient", value), "0, 0, 0 deg") << value;
}

TEST_F(PropertyDisplayTest, OrientOfAnEmptyTextIsTheIdentity) {
    EXPECT_EQ(shown("Orient", ""), "0, 0, 0 deg");
}

TEST_F(PropertyDisplayTest, OrientNumbersThatAreNotReadAreThoseOfTheIdentity) {
    EXPECT_EQ(shown("Orient", "1 1"), "90, 0, 0 deg");
    EXPECT_EQ(shown("Orient", "x 1 0 0"), "0, 0, 0 deg");
    EXPECT_EQ(shown("Orient", "1 1 x 1"), "90, 0, 0 deg");
    EXPECT_EQ(shown("Orient", "1 x 1 0"), "0, 0, 0 deg");
}

TEST_F(PropertyDisplayTest, OrientHasItsScalarPartFirst) {
    EXPECT_EQ(shown("Orient", "1 1 0 0"), "90, 0, 0 deg");
    EXPECT_EQ(shown("Orient", "1 0 0 1"), "0, 0, 90 deg");
    EXPECT_EQ(shown("Orient", "0 0 0 1"), "0, 0, 180 deg");
}

TEST_F(PropertyDisplayTest, OrientIsNormalisedAndFourZerosAreNoRotation) {
    EXPECT_EQ(shown("Orient", "20 20 0 0"), "90, 0, 0 deg");
    EXPECT_EQ(shown("Orient", "0 0 0 0"), "0, 0, 0 deg");
}

TEST_F(PropertyDisplayTest, OrientAnglesTurnAboutXThenYThenZ) {
    EXPECT_EQ(shown("Orient", orient(10, 20, 30)), "10, 20, 30 deg");
    EXPECT_EQ(shown("Orient", orient(-10.25, 20, -170)), "-10.25, 20.00, -170.00 deg");
}

// Where x and z turn about one axis, all of the turn is x's.
TEST_F(PropertyDisplayTest, OrientAnglesAtThePoleHaveNoZ) {
    EXPECT_EQ(shown("Orient", orient(0, 90, 0)), "0, 90, 0 deg");
    EXPECT_EQ(shown("Orient", orient(30, 90, 0)), "30, 90, 0 deg");
    EXPECT_EQ(shown("Orient", orient(30, -90, 0)), "30, -90, 0 deg");
    EXPECT_EQ(shown("Orient", orient(50, 90, 20)), "30, 90, 0 deg");
}

TEST_F(PropertyDisplayTest, OrientIsWholeWithinAThousandthOfADegree) {
    EXPECT_EQ(shown("Orient", orient(10.0009, 19.9991, 30)), "10, 20, 30 deg");
    EXPECT_EQ(shown("Orient", orient(10.0011, 20, 30)), "10.00, 20.00, 30.00 deg");
}

// The precision is chosen while the small angle is still what it was.
TEST_F(PropertyDisplayTest, OrientAnglesBelowAThousandthAreShownAsZero) {
    EXPECT_EQ(shown("Orient", orient(-0.0009, 0, 5)), "0, 0, 5 deg");
    EXPECT_EQ(shown("Orient", orient(-0.0012, 0, 5)), "-0.00, 0.00, 5.00 deg");
    EXPECT_EQ(shown("Orient", orient(-0.0009, 0, 5.5)), "0.00, 0.00, 5.50 deg");
}

TEST_F(PropertyDisplayTest, AWholeNumberIsOneWithinTheTolerance) {
    EXPECT_TRUE(isInt(3.0, 0.0));
    EXPECT_FALSE(isInt(3.0000001, 0.0));
    EXPECT_TRUE(isInt(-0.0, 0.0));
    EXPECT_TRUE(isInt(2.5, 0.5));
    EXPECT_TRUE(isInt(-2.9995, 0.001));
    EXPECT_FALSE(isInt(-2.9985, 0.001));
}

// ---- The global locale

TEST_F(PropertyDisplayTest, ACommaLocaleShowsCommasAndReadsPoints) {
    std::locale::global(commaLocale());
    EXPECT_EQ(shown("Double", "1234.5", "mm"), "1.234,50 mm");
    EXPECT_EQ(shown("Double", "1,5", "mm"), "1,00 mm");
    EXPECT_EQ(shown("Vector3", "1000 2000.5 3"), "1.000,00, 2.000,50, 3,00 mm");
    EXPECT_EQ(shown("Vector3", "1000 2000 3000"), "1.000, 2.000, 3.000 mm");
    EXPECT_EQ(shown("Orient", orient(12.5, 0, 1)), "12,50, 0,00, 1,00 deg");
}

TEST_F(PropertyDisplayTest, ACommaLocaleChangesNoOtherType) {
    std::locale::global(commaLocale());
    enter<Thing>(1234, "Pallet");
    EXPECT_EQ(shown("ObjectId", "1234"), "Pallet");
    EXPECT_EQ(shown("Int32", "1234"), "1234");
}

// Written and read without streams in the classic locale, and still as streams do.
TEST_F(PropertyDisplayTest, NumbersAreThoseOfStreamsInEveryLocale) {
    const auto ofStreams = [](const std::string& value) {
        std::istringstream in(value);
        in.imbue(std::locale::classic());
        std::array<double, 3> v = {0, 0, 0};
        for (double& number : v) {
            double read = 0;
            if (!(in >> read)) break;
            number = read;
        }
        std::ostringstream out;
        const bool whole = isInt(v[0], 0) && isInt(v[1], 0) && isInt(v[2], 0);
        out << std::fixed << std::setprecision(whole ? 0 : 2) << v[0] << ", " << v[1] << ", "
            << v[2] << " mm";
        return out.str();
    };
    std::vector<std::string> texts = {
        "1e400 1 2", "-1e400",   "1e-400 1 2", "-4.9e-324 2", "1e308 -1e308 0.005",
        "+1 -.5 5.", "0x10 1",   "inf 1",      "1e 2",        "1e+ 2",
        "..1",       "1.5.25 3", "1e2e3 4",    "\t1\n2\v3",   "-0 0.4 0",
        "- 1"};
    std::mt19937 random(1);
    for (int i = 0; i != 3000; ++i) {
        std::string& text = texts.emplace_back();
        for (auto length = random() % 20; length != 0; --length)
            text += "0123456789.-+eE  "[random() % 17];
    }
    for (const auto& locale : {std::locale::classic(), commaLocale()}) {
        std::locale::global(locale);
        for (const std::string& text : texts)
            EXPECT_EQ(shown("Vector3", text), ofStreams(text)) << text;
    }
}

}  // namespace trel::test
