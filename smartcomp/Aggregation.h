#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "smartcomp/Connection.h"
#include "smartcomp/Export.h"
#include "smartcomp/SmartComponent.h"

namespace trel::smartcomp {

class Walk;
class Wiring;

/// A component that contains others, and the signal connections and property
/// bindings between them and itself. It owns the connections; its children are
/// components of their own, known by id.
///
/// For every signal connection, the order holds its id at its index, unless it
/// was read with an index beyond the end.
///
/// Connections and bindings may be added, deleted, moved and modified in the
/// middle of a delivery along them. What is deleted before it was reached gets
/// nothing; what is added is not served; what is moved is served once; what is
/// modified is served with its new ends, if it still begins there.
class TREL_API Aggregation : public SmartComponent {
public:
    using ConnectionTable = std::unordered_map<unsigned, Connection*>;

    // A copy shares the connections of its source; only one of the two may ever
    // be destroyed.
    Aggregation(const Aggregation&);
    Aggregation& operator=(const Aggregation&);

    /// Deletes the connections; their elements go with the aggregation's.
    ~Aggregation() override;

    rob::PoseTemplate<double> getPose() const override;
    void setPose(const rob::PoseTemplate<double>& pose) override;
    bool canAttachTo(sdf::SdfNode* node) const override;
    bool hasVisual() const override;
    bool isMovable() const override;

    /// The framed operation: a text that the property has is passed over, and so
    /// is one that comes back round a ring.
    void setPropertyValue(unsigned propertyId, const std::string& value) override;

    /// Stores and tells the value, resets an auto-reset input to 0, and hands the
    /// value, then 0 for an auto-reset input, to the children connected to it.
    void handleInputSignal(unsigned signalId, int value, long long time) override;

    /// Whether one of its own properties gives this object id, which every
    /// property of another type than "ObjectId" does for 0.
    /// \throws what Property::getObjectId throws.
    bool isObjectUsed(unsigned objectId) const override;
    void readPropertyValues() override;
    bool checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const override;

    /// Takes in a child. A diagram position is always written; in memory a child
    /// keeps the one that it has.
    void addChildComponent(unsigned childId, const std::optional<std::pair<int, int>>& xy);

    /// Connections that name the child stay, and so does its position in the
    /// document.
    void removeChildComponent(unsigned childId);

    /// The diagram position of a child; empty when it has none.
    std::optional<std::pair<int, int>> getChildXY(unsigned childId) const;
    void setChildXY(unsigned childId, int x, int y);

    /// The entries (id and connection) of the signal connections, and those of
    /// the bindings. Any change of the connections ends the view.
    auto connections() const {
        return std::views::filter(connections_, [](const ConnectionTable::value_type& entry) {
            return !entry.second->isBinding();
        });
    }
    auto bindings() const {
        return std::views::filter(connections_, [](const ConnectionTable::value_type& entry) {
            return entry.second->isBinding();
        });
    }

    /// The signal connection `id`; null if that is a binding.
    Connection* getConnection(unsigned id) const;
    /// The binding `id`; null if that is a signal connection.
    Connection* getBinding(unsigned id) const;

    /// Those behind a deleted signal connection move forward by one. Its element
    /// stays in the document and nobody is told.
    void deleteConnection(unsigned id);
    void deleteBinding(unsigned id);

    /// Swaps a signal connection with the one behind it, or before it.
    /// \throws std::out_of_range "invalid vector subscript" if there is none, for
    /// a binding, and for a connection that does not stand at its index; nothing
    /// has changed.
    void moveSgConnOrderBackward(unsigned id);
    void moveSgConnOrderForward(unsigned id);

    /// \name Free ids
    /// One more than the largest in use; nothing reserves them. Properties 1 to
    /// 10 are kept for those that a type fixes; connections and bindings share
    /// theirs.
    /// \throws std::length_error where 4294967295 is in use.
    /// @{
    unsigned getNextPropertyId() const;
    unsigned getNextSignalId() const;
    unsigned getNextSgConnId() const;
    /// @}

    unsigned getRoleObject() const { return roleObject_; }
    /// Writes also when nothing changes.
    void setRoleObject(unsigned id);

protected:
    /// Reads what it contains: pose, role object, connections, children and
    /// their diagram positions. Indices with gaps or repeats are made dense, and
    /// written so. Where that throws, the element stays in the document.
    Aggregation(std::shared_ptr<sdf::Element> element, sdf::ObjectType type);

    /// As the base operation, and then into the children connected to the input,
    /// unless the signal is being set on this call chain.
    void setStaticInputSignal(unsigned signalId, SignalValue value) override;

    /// All connections and bindings; the live table.
    const ConnectionTable& connectionTable() const { return connections_; }

    /// Whether a connection was deleted, and lives on only while this is held.
    static bool isDeleted(const Connection& connection) { return connection.gone_; }

private:
    friend class Connection;
    friend class Walk;

    enum class Served : unsigned char { Connections, Bindings };

    // What deliveries keep. A copy shares its connections, hears nothing of what
    // they become, and so keeps nothing from one delivery to the next.
    struct Wired {
        Wired();
        Wired(const Wired&);
        Wired& operator=(const Wired&);
        ~Wired();

        Walk* innermost = nullptr;  // of the walks under way
        std::unique_ptr<const Wiring> connections;
        std::unique_ptr<const Wiring> bindings;
        unsigned plainWalks = 0;  // since the last edit
        bool isCopy = false;
    };

    // What a copy shares with its source, copied before the base is.
    struct Shared;
    Aggregation(const Aggregation& other, Shared&& shared);

    void beforeEdit();
    // Null where none is made yet, or may be kept.
    const Wiring* madeWiring(Served served) const {
        if (wired_.isCopy) return nullptr;
        return (served == Served::Connections ? wired_.connections : wired_.bindings).get();
    }
    const Wiring* wiring(Served served) {
        const Wiring* const made = madeWiring(served);
        return made ? made : makeWiring(served);
    }
    const Wiring* makeWiring(Served served);
    std::vector<const Connection*> inOrderOfService(Served served) const;
    std::vector<std::unique_ptr<Connection>> loadConnections();
    Connection* addConnection(std::unique_ptr<Connection> connection);
    void closeGap(std::size_t place);
    std::size_t placeOf(const Connection& connection) const;
    void swapWithNeighbour(unsigned id, int step);
    void writeXY(unsigned childId, int x, int y);
    template <typename Value, typename Deliver>
    void propagateInwards(SCSignal& source, const Value& value, const Deliver& deliver);
    void propagateDynamicInputSignal(unsigned signalId, int value, long long time);
    SCSignal* beginStaticInput(unsigned signalId, const SignalValue& value);
    void propagateStaticInputSignal(SCSignal& source, const SignalValue& value);

    unsigned roleObject_ = 0;
    std::unordered_map<unsigned, std::pair<int, int>> childPositions_;
    ConnectionTable connections_;
    std::vector<unsigned> order_;                          // signal connections, in delivery order
    mutable std::optional<unsigned> largestConnectionId_;  // empty until it is asked for
    Wired wired_;
};

}  // namespace trel::smartcomp
