#include "smartcomp/Connection.h"

#include <any>
#include <utility>

#include "smartcomp/Aggregation.h"
#include "smartcomp/Lookup.h"

namespace trel::smartcomp {

namespace {

// -1 where there is no place; the largest indices wrap to negative ones and
// count as none.
int indexOf(sdf::Element& element) {
    const auto index = element.get("index");
    if (!index || !index->value().has_value()) return -1;
    return static_cast<int>(std::any_cast<unsigned>(index->value()));
}

}  // namespace

Connection* Connection::Build(Aggregation* aggregation, unsigned id, unsigned srcComponentId,
                              unsigned srcSignalId, unsigned dstComponentId, unsigned dstSignalId,
                              int index) {
    const auto element = aggregation->element()->append("connection");
    element->setId(id);
    write(element, "source", pack(srcComponentId, srcSignalId));
    write(element, "destination", pack(dstComponentId, dstSignalId));
    if (index >= 0) write(element, "index", static_cast<unsigned>(index));
    return Create(aggregation, element);
}

Connection* Connection::Create(Aggregation* aggregation, std::shared_ptr<sdf::Element> element) {
    std::unique_ptr<Connection> connection(new Connection(std::move(element)));
    return aggregation->addConnection(std::move(connection));
}

Connection::Connection(std::shared_ptr<sdf::Element> element)
    : SdfObject(element, sdf::ObjectType::None),
      source_(element->asUInt64("source")),
      destination_(element->asUInt64("destination")),
      index_(indexOf(*element)) {}

Connection::Connection(const Connection& other)
    : SdfObject(other),
      source_(other.source_),
      destination_(other.destination_),
      index_(other.index_) {}

// Nothing of a connection is worth moving.
Connection::Connection(Connection&& other) : Connection(std::as_const(other)) {}

Connection& Connection::operator=(const Connection& other) {
    beforeEdit();
    SdfObject::operator=(other);
    source_ = other.source_;
    destination_ = other.destination_;
    index_ = other.index_;
    return *this;
}

Connection& Connection::operator=(Connection&& other) { return *this = std::as_const(other); }

Connection::~Connection() = default;

void Connection::beforeEdit() {
    if (owner_) owner_->beforeEdit();
}

unsigned Connection::GetComponentId(std::shared_ptr<sdf::Element> end) {
    return componentOf(end->asUInt64(""));
}

void Connection::SetComponentId(std::shared_ptr<sdf::Element> end, unsigned componentId) {
    end->setValue(std::any(pack(componentId, memberOf(end->asUInt64("")))));
}

void Connection::modify(unsigned srcComponentId, unsigned srcSignalId, unsigned dstComponentId,
                        unsigned dstSignalId) {
    const End source = pack(srcComponentId, srcSignalId);
    const End destination = pack(dstComponentId, dstSignalId);
    if (source != source_ || destination != destination_) beforeEdit();
    const auto replace = [this](End& end, std::string_view key, End wanted) {
        if (end == wanted) return;
        end = wanted;
        write(element(), key, wanted);
    };
    replace(source_, "source", source);
    replace(destination_, "destination", destination);
}

void Connection::setIndex(unsigned index) {
    if (index == getIndex()) return;
    if (isBinding() != (static_cast<int>(index) < 0)) beforeEdit();
    index_ = static_cast<int>(index);
    write(element(), "index", index);
}

}  // namespace trel::smartcomp
