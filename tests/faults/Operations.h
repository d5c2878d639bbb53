#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/Scene.h"

namespace trel::test {

/// An operation that is tried with failing memory. What it throws beside
/// std::bad_alloc is its answer.
struct Operation {
    const char* name;
    std::function<void(Scene&)> act;
    /// Before it, with memory.
    std::function<void(Scene&)> prepare = [](Scene&) {};
    /// What has to be cleared away before it can be repeated: what it leaves
    /// behind as its rules say.
    std::function<void(Scene&)> repair = [](Scene&) {};
    /// What may differ from its element after a failure, for the field comes first.
    Lines mayDiffer = {};
    /// It loses what it is stated to lose: a constructor that throws the records
    /// that it had entered.
    bool losesRecords = false;
};

/// Every public operation, by what it works on.
std::vector<Operation> operationsOfRecords();
std::vector<Operation> operationsOfComponents();
std::vector<Operation> operationsOfAggregations();
std::vector<Operation> operationsOfDeliveries();
std::vector<Operation> operationsOfLifecycle();
std::vector<Operation> operationsOfDocuments();

}  // namespace trel::test
