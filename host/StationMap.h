#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/sdf/Element.h"

namespace trel::host {

using ElementPtr = std::shared_ptr<sdf::Element>;

/// A component or controller, as the document has it.
struct MappedObject {
    ElementPtr element;
    unsigned id;      // 0 without one
    unsigned parent;  // 0 if none can be read; for a controller the station logic

    bool isController() const { return element->tag() == "controller"; }
    bool isLogic() const;
};

/// An end of a connection: a component and one of its signals or properties.
struct MappedEnd {
    unsigned object;
    unsigned member;

    explicit MappedEnd(std::uint64_t packed)
        : object(static_cast<unsigned>(packed >> 32)), member(static_cast<unsigned>(packed)) {}
    MappedEnd(unsigned objectId, unsigned memberId) : object(objectId), member(memberId) {}
    std::uint64_t packed() const { return (std::uint64_t{object} << 32) | member; }
};

/// A station as its document says it is, whether or not anything can be made of
/// it: what there is by id, what contains what, and what it is called. It is of
/// the document as it stood when the map was made.
class StationMap {
public:
    explicit StationMap(const sdf::Element& station);

    /// Components, then controllers, in the order of the document.
    const std::vector<MappedObject>& objects() const { return objects_; }

    /// The first object with that id, or null.
    const MappedObject* find(unsigned id) const;

    /// The id of the station logic; 0 if there is none.
    unsigned logic() const { return logic_; }

    /// Null if there is none.
    sdf::Element* signal(MappedEnd end) const { return memberIn(signals_, end); }
    sdf::Element* property(MappedEnd end) const { return memberIn(properties_, end); }
    sdf::Element* member(std::string_view tag, MappedEnd end) const {
        return tag == "signal" ? signal(end) : property(end);
    }

    /// Whether the object is an aggregation, as far as its element tells.
    bool looksLikeAggregation(const MappedObject& object) const;

    /// The paths of names of an object and of a member, "Cell/Gripper.Close"; ids
    /// stand for what has no name and for what is not there.
    std::string pathOf(const MappedObject& object) const;
    std::string pathOf(unsigned id) const;
    std::string pathOf(const MappedObject& owner, sdf::Element& member) const;
    std::string pathOf(std::string_view tag, MappedEnd end) const;

private:
    using Members = std::unordered_map<std::uint64_t, sdf::Element*>;

    void enter(const ElementPtr& element);
    static sdf::Element* memberIn(const Members& members, MappedEnd end);

    std::vector<MappedObject> objects_;
    std::unordered_map<unsigned, std::size_t> byId_;
    Members signals_;
    Members properties_;
    unsigned logic_ = 0;
};

/// What a connection's end holds; empty for one that is missing or is no number.
std::optional<MappedEnd> endOf(sdf::Element& connection, std::string_view key);

/// The name of a signal or property element; empty if it has none.
std::string nameOfMember(sdf::Element& member);

}  // namespace trel::host
