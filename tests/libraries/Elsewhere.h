#pragma once

#include <any>
#include <memory>

#include "tests/libraries/Types.h"

/// What a library that knows nothing of a program gives it.
namespace trel::test::elsewhere {

#define TREL_ELSEWHERE [[gnu::visibility("default")]]

TREL_ELSEWHERE Types types();

/// An aggregation of a type that nobody else knows.
TREL_ELSEWHERE std::unique_ptr<sdf::SdfObject> makeAggregation();

TREL_ELSEWHERE std::any pose(double x);
TREL_ELSEWHERE [[noreturn]] void throwDocumentError();

}  // namespace trel::test::elsewhere
