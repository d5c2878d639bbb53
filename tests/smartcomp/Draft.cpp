#include "tests/smartcomp/Draft.h"

#include <utility>

#include "platform/rob/Vec3Template.h"
#include "platform/station/Station.h"

namespace trel::test {

namespace {

void write(sdf::Element& element, std::string_view key, std::any value) {
    element.touch(key)->setValue(std::move(value));
}

std::any zeroOf(const std::string& signalType) {
    return signalType.starts_with("Digital") ? std::any(0) : std::any(0.0);
}

}  // namespace

unsigned long long packed(End end) {
    return (static_cast<unsigned long long>(end.component) << 32) | end.member;
}

ElementPtr propertyElement(unsigned id, const std::string& name, const std::string& type,
                           std::any value, const std::string& unit) {
    const auto element = sdf::Element::Create("property");
    element->setId(id);
    element->setName(name);
    write(*element, "type", type);
    if (value.has_value()) element->setValue(std::move(value));
    if (!unit.empty()) write(*element, "unit", unit);
    return element;
}

ElementPtr signalElement(unsigned id, const std::string& name, const std::string& type,
                         std::any value, bool autoReset) {
    const auto element = sdf::Element::Create("signal");
    element->setId(id);
    write(*element, "name", name);
    write(*element, "type", type);
    if (value.has_value()) write(*element, "value", std::move(value));
    if (autoReset) write(*element, "auto_reset", true);
    return element;
}

Draft::Draft(const std::string& type, unsigned id, const std::string& name)
    : element_(GetStationElem()->appendObject("smart_component", id, name)) {
    write(*element_, "type", type);
    in(Station::logicId);
}

Draft& Draft::in(unsigned parentId) {
    write(*element_, "parent", parentId);
    return *this;
}

Draft& Draft::property(unsigned id, const std::string& name, const std::string& type,
                       std::any value, const std::string& unit) {
    element_->append(propertyElement(id, name, type, std::move(value), unit));
    return *this;
}

Draft& Draft::signal(unsigned id, const std::string& name, const std::string& type) {
    element_->append(signalElement(id, name, type, zeroOf(type)));
    return *this;
}

Draft& Draft::autoReset(unsigned id, const std::string& name, const std::string& type) {
    element_->append(signalElement(id, name, type, zeroOf(type), true));
    return *this;
}

Draft& Draft::connection(unsigned id, End source, End destination, std::optional<unsigned> index) {
    const auto connection = element_->append("connection")->setId(id);
    write(*connection, "source", packed(source));
    write(*connection, "destination", packed(destination));
    if (index) write(*connection, "index", *index);
    return *this;
}

Draft& Draft::child(unsigned id) {
    element_->append("child")->setValue(id);
    return *this;
}

Draft& Draft::xy(double childId, double x, double y) {
    element_->append("xy")->setValue(rob::Vec3Template<double>{childId, x, y});
    return *this;
}

}  // namespace trel::test
