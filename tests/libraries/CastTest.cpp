#include <gtest/gtest.h>

#include <any>
#include <memory>

#include "tests/libraries/Elsewhere.h"

namespace trel::test {

namespace {

// By address: where the standard library compares names, two of a kind would pass.
TEST(Casts, ATypeIsOneAndTheSameInAllLibraries) {
    const Types here = typesHere();
    const Types there = elsewhere::types();
    for (std::size_t i = 0; i != here.size(); ++i) EXPECT_EQ(here[i], there[i]) << here[i]->name();
}

TEST(Casts, AComponentOfAnotherLibraryIsKnownByItsBases) {
    const std::unique_ptr<sdf::SdfObject> made = elsewhere::makeAggregation();
    EXPECT_NE(dynamic_cast<smartcomp::SmartComponent*>(made.get()), nullptr);
    EXPECT_NE(dynamic_cast<smartcomp::Aggregation*>(made.get()), nullptr);
    EXPECT_EQ(dynamic_cast<smartcomp::Sensor*>(made.get()), nullptr);
    EXPECT_EQ(dynamic_cast<ControllerInterface*>(made.get()), nullptr);
}

TEST(Casts, WhatAnotherLibraryThrowsIsCaught) {
    EXPECT_THROW(elsewhere::throwDocumentError(), sdf::DocumentError);
}

TEST(Casts, AValueOfAnotherLibraryIsTaken) {
    const auto element = sdf::Element::Create("frame");
    element->setValue(elsewhere::pose(7));
    EXPECT_EQ(element->asPose("").position.x, 7);
    EXPECT_EQ(std::any_cast<rob::PoseTemplate<double>>(element->value()).position.x, 7);
}

}  // namespace

}  // namespace trel::test
