#include <QString>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <ranges>
#include <string>
#include <string_view>

#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/TypeLibrary.h"
#include "tests/apart/Deletions.h"
#include "tests/network/Station.h"

// One process of ApartTest.cpp:
//
//   take_apart grow FILE SEED       makes a random station, runs it a little, saves
//                                   it and takes it apart
//   take_apart forwards FILE SEED   loads a station and takes it apart in random
//                                   order
//   take_apart backwards FILE SEED  the same in reverse order

namespace {

using trel::smartcomp::Aggregation;
using trel::smartcomp::Manager;
using trel::smartcomp::SmartComponent;
using trel::test::Deletion;
using Element = std::shared_ptr<sdf::Element>;

// Components that only have what their elements say.
class Plain : public SmartComponent {
public:
    explicit Plain(Element element) : SmartComponent(std::move(element), sdf::ObjectType{40}) {}
    void handleInputSignal(unsigned, int, long long) override {}
    void execute(long long) override {}
    void readPropertyValues() override {}
};

template <sdf::ObjectType type>
class Group : public Aggregation {
public:
    explicit Group(Element element) : Aggregation(std::move(element), type) {}
    void execute(long long) override {}
};

template <typename Type>
void registerType(std::string_view name) {
    const auto make = [](Element element) -> SmartComponent* {
        return new Type(std::move(element));
    };
    Manager::inst()->registerType(name, make, make, [] { return QString(); });
}

void load(const std::string& file) {
    trelRegisterComponents();
    registerType<Plain>("Plain");
    registerType<Group<sdf::ObjectType{41}>>("Group");
    registerType<Group<sdf::ObjectType::UserComponent>>("UserGroup");
    trel::Station::inst().open(file);
    trel::smartcomp::StationLogic::inst();
    trel::smartcomp::Load();
}

void takeApart(unsigned seed, bool backwards) {
    network::Random random(seed);
    std::vector<Deletion> deletions = trel::test::everything(random);
    if (backwards) std::ranges::reverse(deletions);
    for (const Deletion& deletion : deletions) trel::test::apply(deletion);
    trel::test::expectNothingLeft();
}

// \throws std::logic_error with what differs from the model.
void grow(const std::string& file, unsigned seed) {
    const auto expectSame = [](const std::string& difference) {
        if (!difference.empty()) throw std::logic_error(difference);
    };
    network::Random random(seed);
    network::Model model;
    network::TwinStation station(random, model);
    for (unsigned step = 0; step != 20; ++step) expectSame(station.act());
    trel::Station::inst().save(file);
    expectSame(station.takeApart());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    const std::string_view what = argv[1];
    const std::string file = argv[2];
    const auto seed = static_cast<unsigned>(std::strtoul(argv[3], nullptr, 10));
    try {
        if (what == "grow") {
            grow(file, seed);
        } else {
            load(file);
            takeApart(seed, what == "backwards");
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << what << " " << seed << ": " << error.what() << "\n";
        return 1;
    }
}
