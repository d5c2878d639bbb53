#include "tests/libraries/Elsewhere.h"

namespace trel::test::elsewhere {

namespace {

class Group final : public smartcomp::Aggregation {
public:
    Group() : Aggregation(sdf::Element::Create("smart_component"), sdf::ObjectType::Component) {}
    void execute(long long) override {}
};

}  // namespace

Types types() { return typesHere(); }

std::unique_ptr<sdf::SdfObject> makeAggregation() { return std::make_unique<Group>(); }

std::any pose(double x) { return rob::PoseTemplate<double>{{x, 0, 0}, {}}; }

void throwDocumentError() { throw sdf::DocumentError("cell.xml", {}, "it is no document"); }

}  // namespace trel::test::elsewhere
