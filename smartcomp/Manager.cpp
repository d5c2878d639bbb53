#include "smartcomp/Manager.h"

#include <QString>
#include <unordered_map>

#include "smartcomp/Lookup.h"

namespace trel::smartcomp {

struct Manager::State {
    std::list<SmartComponent*> components;
    std::unordered_map<std::string_view, MakeFunction> buildFunction;
    std::unordered_map<std::string_view, VisualFunction> visualFunction;
    std::unordered_map<std::string_view, MakeFunction> createFunction;
    std::unordered_map<std::string_view, DescFunction> descFunction;
};

Manager* Manager::inst() {
    static Manager manager;
    return &manager;
}

Manager::Manager() : state_(std::make_unique<State>()) {}

Manager::~Manager() = default;

void Manager::registerType(std::string_view name, MakeFunction create, MakeFunction build,
                           DescFunction desc) {
    // emplace keeps the entry that is there: the first registration wins.
    state_->createFunction.emplace(name, create);
    state_->buildFunction.emplace(name, build);
    state_->descFunction.emplace(name, desc);
}

void Manager::registerVisualType(std::string_view name, VisualFunction visual) {
    state_->visualFunction.emplace(name, visual);
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

std::list<SmartComponent*>& Manager::components() { return state_->components; }

}  // namespace trel::smartcomp
