#include "tests/network/LiveEdits.h"

#include <stdexcept>

#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Lifecycle.h"
#include "tests/network/Live.h"
#include "tests/support/TableLock.h"

namespace network {

namespace {

using trel::smartcomp::Aggregation;
using trel::smartcomp::SmartComponent;

const Script* current = nullptr;
std::vector<std::string>* told = nullptr;
std::size_t calls = 0;
std::size_t next = 0;

void set(const Edit& edit) {
    auto& component = live<SmartComponent>(edit.component);
    switch (edit.path) {
        case Edit::Path::Static: return component.setStaticSignalValue(edit.member, edit.value);
        case Edit::Path::Dynamic:
            return component.handleSignalValue(edit.member, std::get<int>(edit.value), 17);
        default: return component.setPropertyValue(edit.member, edit.text);
    }
}

void remove(const Edit& edit) {
    if (edit.tellsParent)
        trel::smartcomp::RemoveSmartComponent(edit.component);
    else
        trel::smartcomp::RemoveSubSmartComponent(edit.component);
    if (sdf::SdfManager::inst()->find(edit.component))
        throw std::logic_error("a removed component is still in the table");
}

}  // namespace

void LiveEdits::follow(const Script& script, std::vector<std::string>& log) {
    current = &script;
    told = &log;
    calls = 0;
    next = 0;
}

void LiveEdits::rest() { current = nullptr; }

void LiveEdits::expectUnlocked() {
    if (trel::test::isTableLocked())
        throw std::logic_error("the object table is locked during a call out of the library");
}

void LiveEdits::called() {
    expectUnlocked();
    if (!current) return;
    ++calls;
    if (next == current->planned.size() || current->planned[next].call != calls) return;
    const Edit& edit = current->planned[next++].edit;
    told->push_back(std::string("edit: ") + nameOf(edit.kind) + " " +
                    std::to_string(edit.component) + " " + std::to_string(edit.member));
    apply(edit);
    told->push_back("components: " +
                    std::to_string(trel::GetStationElem()->children("smart_component").size()));
}

void LiveEdits::apply(const Edit& edit) {
    const Connection& ends = edit.ends;
    switch (edit.kind) {
        case EditKind::DeleteConnection:
            return live<Aggregation>(edit.component).deleteConnection(edit.member);
        case EditKind::DeleteBinding:
            return live<Aggregation>(edit.component).deleteBinding(edit.member);
        case EditKind::AddConnection:
        case EditKind::AddBinding: {
            auto& group = live<Aggregation>(edit.component);
            trel::smartcomp::Connection::Build(&group, group.getNextSgConnId(), ends.srcComponent,
                                               ends.src, ends.dstComponent, ends.dst, ends.index);
            return;
        }
        case EditKind::Move:
            if (edit.step > 0)
                return live<Aggregation>(edit.component).moveSgConnOrderBackward(edit.member);
            return live<Aggregation>(edit.component).moveSgConnOrderForward(edit.member);
        case EditKind::ModifyConnection:
            return live<Aggregation>(edit.component)
                .getConnection(edit.member)
                ->modify(ends.srcComponent, ends.src, ends.dstComponent, ends.dst);
        case EditKind::ModifyBinding:
            return live<Aggregation>(edit.component)
                .getBinding(edit.member)
                ->modify(ends.srcComponent, ends.src, ends.dstComponent, ends.dst);
        case EditKind::DeleteSignal:
            return live<SmartComponent>(edit.component).deleteSignal(edit.member);
        case EditKind::DeleteProperty:
            return live<SmartComponent>(edit.component).deleteProperty(edit.member);
        case EditKind::SetSame:
        case EditKind::SetOther: return set(edit);
        default: return remove(edit);
    }
}

}  // namespace network
