#include <algorithm>
#include <mutex>
#include <set>
#include <stdexcept>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "platform/layout/AttachableNode.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"

namespace sdf {

SdfManager* SdfManager::inst() {
    static auto* const manager = new SdfManager;  // outlives every object
    return manager;
}

void SdfManager::Remove(unsigned id) {
    const std::unique_lock lock(inst()->mutex_);
    inst()->objects_.erase(id);
}

SdfObject::SdfObject(std::shared_ptr<Element> element, ObjectType type)
    : type_(type), element_(std::move(element)) {
    if (!element_) throw std::invalid_argument("an object needs an element");
    id_ = element_->getId(true);
}

SdfObject::~SdfObject() = default;

bool SdfObject::AnyOfDescendant(unsigned id, const std::function<bool(const SdfObject*)>& predicate,
                                bool itself) {
    SdfObject* object = nullptr;
    {
        const std::shared_lock lock(SdfManager::inst()->mutex());
        const auto entry = SdfManager::inst()->objects().find(id);
        if (entry != SdfManager::inst()->objects().end()) object = entry->second;
    }
    return object && object->anyOfDescendant(predicate, itself);
}

void SdfContainer::addObjChild(std::shared_ptr<Element> child) {
    children_.emplace(child->asUInt(""), child);
}

void SdfContainer::addObjChildWithSdf(unsigned id) {
    if (hasObjChild(id)) return;
    const auto child = element()->append("child");
    child->setValue(id);
    children_.emplace(id, child);
}

void SdfContainer::removeObjChildWithSdf(unsigned id) {
    const auto child = children_.find(id);
    if (child == children_.end()) return;
    child->second->removeFromParent();
    children_.erase(child);
}

void SdfContainer::moveChild(unsigned id, unsigned place) {
    if (const auto child = children_.find(id); child != children_.end())
        element()->moveTo(place, *child->second);
}

bool SdfContainer::anyOfDescendant(const std::function<bool(const SdfObject*)>& predicate,
                                   bool itself) const {
    static thread_local std::set<const SdfContainer*> asked;  // children may form a ring
    if (!asked.insert(this).second) return false;
    bool found = itself && predicate(this);
    try {
        for (auto child = children_.begin(); !found && child != children_.end(); ++child)
            found = AnyOfDescendant(child->first, predicate, true);
    } catch (...) {
        asked.erase(this);
        throw;
    }
    asked.erase(this);
    return found;
}

trel::rob::PoseTemplate<double> SdfNode::getPose() const { return element()->asPose("pose"); }

void SdfNode::setPose(const trel::rob::PoseTemplate<double>& pose) {
    if (!(getPose() == pose)) element()->touch("pose")->setValue(pose);
}

void SdfNode::setVisAndObjParent(unsigned id) { visParentId_ = objParentId_ = id; }

}  // namespace sdf

namespace trel {

namespace layout {

AttachableNode::AttachableNode(std::shared_ptr<sdf::Element> element, sdf::ObjectType type)
    : SdfNode(std::move(element), type) {}
AttachableNode::AttachableNode(const AttachableNode&) = default;
AttachableNode& AttachableNode::operator=(const AttachableNode&) = default;
AttachableNode::~AttachableNode() = default;

void AttachableNode::setPose(const rob::PoseTemplate<double>& pose) { SdfNode::setPose(pose); }
bool AttachableNode::canAttachTo(sdf::SdfNode* node) const { return node != this; }

}  // namespace layout

namespace broker {

namespace {

std::vector<Listener*>& listeners() {
    static auto* const all = new std::vector<Listener*>;  // outlives every object
    return *all;
}

template <typename Notice>
void tell(const Notice& notice) {
    for (Listener* const listener : std::vector(listeners())) notice(*listener);
}

}  // namespace

void SignalBroker::subscribe(Listener& listener) { listeners().push_back(&listener); }
void SignalBroker::unsubscribe(Listener& listener) { std::erase(listeners(), &listener); }

void SignalBroker::smartComponentUpdated(unsigned id) {
    tell([&](Listener& listener) { listener.smartComponentUpdated(id); });
}
void SignalBroker::scPropertyValueChanged(unsigned property, unsigned component) {
    tell([&](Listener& listener) { listener.scPropertyValueChanged(property, component); });
}
void SignalBroker::scSignalValueChanged(unsigned signal, unsigned component) {
    tell([&](Listener& listener) { listener.scSignalValueChanged(signal, component); });
}
void SignalBroker::signalConnectionDeleted(unsigned connection, unsigned logic) {
    tell([&](Listener& listener) { listener.signalConnectionDeleted(connection, logic); });
}
void SignalBroker::setVisualPose(unsigned object, const rob::PoseTemplate<double>& pose) {
    tell([&](Listener& listener) { listener.setVisualPose(object, pose); });
}
void SignalBroker::reportEvent(std::string code, std::string text1, std::string text2,
                               std::string text3) {
    tell([&](Listener& listener) { listener.reportEvent(code, text1, text2, text3); });
}

}  // namespace broker

Station::Station()
    : element(sdf::Element::Create("station")->setId(id)),
      logic(element->appendObject("smart_component", logicId, "Station Logic")) {
    logic->touch("type")->setValue(std::string("StationLogic"));
    logic->touch("parent")->setValue(0u);
    object_ = std::make_unique<sdf::SdfObject>(element, sdf::ObjectType::Station);
    const std::unique_lock lock(sdf::SdfManager::inst()->mutex());
    sdf::SdfManager::inst()->objects()[id] = object_.get();
}

Station& Station::inst() {
    static auto* const station = new Station;  // outlives every object
    return *station;
}

std::shared_ptr<sdf::Element> GetStationElem() { return Station::inst().element; }
std::shared_ptr<sdf::Element> GetStationLogicElem() { return Station::inst().logic; }

}  // namespace trel
