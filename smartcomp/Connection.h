#pragma once

#include <cstdint>
#include <memory>

#include "platform/sdf/SdfObject.h"
#include "smartcomp/Export.h"

namespace trel::smartcomp {

class Aggregation;

/// One edge inside an aggregation: a signal connection, which has a place in
/// the order in which values are delivered, or a property binding, which has
/// none. Owned by its aggregation.
///
/// An end is a component and one of its signals or properties; the aggregation's
/// own signals and properties are addressed by its own id.
class TREL_API Connection : public sdf::SdfObject {
public:
    /// Appends a "connection" element to the aggregation's and makes the
    /// connection; a negative index makes a binding, between properties.
    static Connection* Build(Aggregation* aggregation, unsigned id, unsigned srcComponentId,
                             unsigned srcSignalId, unsigned dstComponentId, unsigned dstSignalId,
                             int index);

    /// Reads a "connection" element and hands the result to `aggregation`. A
    /// signal connection takes the place it names, and those behind it move back
    /// by one; beyond the end it stands last, with the index as read.
    /// \throws std::bad_any_cast if "index" holds something else than a place.
    static Connection* Create(Aggregation* aggregation, std::shared_ptr<sdf::Element> element);

    Connection(const Connection&);
    Connection(Connection&&);
    Connection& operator=(const Connection&);
    Connection& operator=(Connection&&);
    /// The element stays in the document.
    ~Connection() override;

    /// The component in a "source" or "destination" element.
    static unsigned GetComponentId(std::shared_ptr<sdf::Element> end);

    /// Puts another component into a "source" or "destination" element, and into
    /// no connection that was made from it.
    static void SetComponentId(std::shared_ptr<sdf::Element> end, unsigned componentId);

    /// \name An end as the document holds it
    /// The component in the high half, its signal or property in the low half.
    /// @{
    using End = unsigned long long;

    static constexpr End pack(unsigned componentId, unsigned memberId) {
        return (End{componentId} << 32) | memberId;
    }
    static constexpr unsigned componentOf(End end) { return static_cast<unsigned>(end >> 32); }
    static constexpr unsigned memberOf(End end) { return static_cast<unsigned>(end); }

    End source() const { return source_; }
    End destination() const { return destination_; }
    /// @}

    unsigned getSrcComponentId() const { return componentOf(source_); }
    unsigned getSrcSignalId() const { return memberOf(source_); }
    unsigned getSrcPropertyId() const { return memberOf(source_); }
    unsigned getDstComponentId() const { return componentOf(destination_); }
    unsigned getDstSignalId() const { return memberOf(destination_); }
    unsigned getDstPropertyId() const { return memberOf(destination_); }

    /// 4294967295 in a binding, which has no place in the order.
    unsigned getIndex() const { return static_cast<unsigned>(index_); }
    bool isBinding() const { return index_ < 0; }

    bool matchSrc(unsigned componentId) const { return getSrcComponentId() == componentId; }
    bool matchSrc(unsigned componentId, unsigned signalId) const {
        return source_ == pack(componentId, signalId);
    }
    bool matchDst(unsigned componentId) const { return getDstComponentId() == componentId; }
    bool matchDst(unsigned componentId, unsigned signalId) const {
        return destination_ == pack(componentId, signalId);
    }

    /// Writes only an end that changes.
    void modify(unsigned srcComponentId, unsigned srcSignalId, unsigned dstComponentId,
                unsigned dstSignalId);

    /// Writes only another index than the present one. The aggregation's order
    /// is the caller's affair.
    void setIndex(unsigned index);

private:
    friend class Aggregation;

    explicit Connection(std::shared_ptr<sdf::Element> element);
    void beforeEdit();

    End source_;
    End destination_;
    int index_;                     // place in the order; -1 in a binding
    bool gone_ = false;             // deleted while its aggregation is held
    Aggregation* owner_ = nullptr;  // who hears of edits; a copy has none
};

}  // namespace trel::smartcomp
