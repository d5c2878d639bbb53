#include "smartcomp/Manager.h"

#include <algorithm>
#include <unordered_map>

#include "smartcomp/Lookup.h"
#include "smartcomp/Roster.h"

namespace trel::smartcomp {

struct Manager::State {
    Roster roster;
    std::unordered_map<std::string_view, MakeFunction> buildFunction;
    std::unordered_map<std::string_view, VisualFunction> visualFunction;
    std::unordered_map<std::string_view, MakeFunction> createFunction;
    std::unordered_map<std::string_view, DescFunction> descFunction;
};

Manager* Manager::inst() {
    static Manager manager;
    return &manager;
}

namespace {

// An entry that is made now and enters its table later, where nothing throws. The
// entry that is there is kept: the first registration wins.
template <typename Table>
class Entry {
public:
    Entry(Table& table, std::string_view name, typename Table::mapped_type function)
        : table_(table) {
        entry_.emplace(name, function);
        table.reserve(table.size() + 1);
    }

    void enter() { table_.merge(entry_); }

private:
    Table& table_;
    Table entry_;
};

}  // namespace

Manager::Manager() : state_(std::make_unique<State>()) {}

Manager::~Manager() = default;

void Manager::registerType(std::string_view name, MakeFunction create, MakeFunction build,
                           DescFunction desc) {
    // All three or none.
    Entry createEntry(state_->createFunction, name, create);
    Entry buildEntry(state_->buildFunction, name, build);
    Entry descEntry(state_->descFunction, name, desc);
    createEntry.enter();
    buildEntry.enter();
    descEntry.enter();
}

void Manager::registerVisualType(std::string_view name, VisualFunction visual) {
    state_->visualFunction.emplace(name, visual);
}

std::vector<Manager::Type> Manager::types() const {
    std::vector<Type> all;
    for (const auto& [name, description] : state_->descFunction) all.push_back({name, description});
    std::ranges::sort(all, {}, &Type::name);
    return all;
}

Manager::DescFunction Manager::getDescFunc(std::string_view name) const {
    return at(state_->descFunction, name);
}

Manager::MakeFunction Manager::getCreateFunc(std::string_view name) const {
    return at(state_->createFunction, name);
}

Manager::MakeFunction Manager::getBuildFunc(std::string_view name) const {
    return at(state_->buildFunction, name);
}

Manager::VisualFunction Manager::getVisualFunc(std::string_view name) const {
    return at(state_->visualFunction, name);
}

Roster& Manager::roster() { return state_->roster; }

}  // namespace trel::smartcomp
