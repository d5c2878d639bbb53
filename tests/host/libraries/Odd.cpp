// A library of component types that misbehave, each in its own way.
#include <QString>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/TypeLibrary.h"

namespace {

using trel::smartcomp::SmartComponent;

// Keeps the settings of the base, which are not framed.
class Odd : public SmartComponent {
public:
    explicit Odd(std::shared_ptr<sdf::Element> element)
        : SmartComponent(std::move(element), sdf::ObjectType::Component) {}
    void handleInputSignal(unsigned, int, long long) override {}
    void execute(long long) override {}
    void readPropertyValues() override {}
};

// Fails at 30 ms.
class Thrower final : public Odd {
public:
    using Odd::Odd;
    void handleInputSignal(unsigned, int, long long) override {
        throw std::runtime_error("does not like its input");
    }
    void execute(long long time) override {
        if (time == 30'000) throw std::runtime_error("has had enough");
    }
};

// Fails when it is made.
class Stillborn final : public Odd {
public:
    using Odd::Odd;
    void readPropertyValues() override { throw std::runtime_error("misses its settings"); }
};

// Removes the component 11 at 20 ms, and makes a new one in its place at 40 ms.
class Changer final : public Odd {
public:
    using Odd::Odd;
    void execute(long long time) override {
        if (time == 20'000) trel::smartcomp::RemoveSmartComponent(11);
        if (time == 40'000) trel::smartcomp::Build("NotGate", 11, "New", 2);
    }
};

// Fails when it is set.
class Touchy final : public Odd {
public:
    using Odd::Odd;
    void setPropertyValue(unsigned, const std::string&) override {
        throw std::runtime_error("does not like it");
    }
};

// Asks for what a new one does not have.
class Asker final : public Odd {
public:
    using Odd::Odd;
    void readPropertyValues() override { getProperty(1); }
};

// Starts with what is no property or signal.
class Sloppy final : public Odd {
public:
    explicit Sloppy(std::shared_ptr<sdf::Element> element)
        : Odd((furnish(*element), std::move(element))) {}

private:
    static void furnish(sdf::Element& element) {
        for (const char* const name : {"In", "Out"}) {
            const auto signal = element.append("signal")->setId(1);
            signal->touch("name")->setValue(std::string(name));
            signal->touch("type")->setValue(std::string("DigitalOut"));
        }
        element.appendObject("property", 1, "Speed")
            ->touch("type")
            ->setValue(std::string("double"));
    }
};

// Ends the process that makes it.
class Crasher final : public Odd {
public:
    using Odd::Odd;
    void readPropertyValues() override { std::abort(); }
};

// Sends the other value at each reaction, and fails at the one that its property 1 says.
class Fragile final : public Odd {
public:
    using Odd::Odd;
    void handleInputSignal(unsigned signalId, int value, long long time) override {
        signalAt(signalId).setValue(value);
        react(time);
    }
    void execute(long long time) override { react(time); }

private:
    void react(long long time) {
        if (std::to_string(++reactions_) == getProperty(1)->value())
            throw std::runtime_error("broke at " + std::to_string(reactions_));
        handleOutputSignal(2, reactions_ % 2, time);
    }

    int reactions_ = 0;
};

template <typename Type>
SmartComponent* make(std::shared_ptr<sdf::Element> element) {
    return new Type(std::move(element));
}

template <typename Type>
void enter(const char* name) {
    trel::smartcomp::Manager::inst()->registerType(name, make<Type>, make<Type>,
                                                   [] { return QString(); });
}

}  // namespace

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi; }

void trelRegisterComponents() {
    enter<Thrower>("Thrower");
    enter<Stillborn>("Stillborn");
    enter<Changer>("Changer");
    enter<Crasher>("Crasher");
    enter<Touchy>("Touchy");
    enter<Odd>("Bare");
    enter<Fragile>("Fragile");
    enter<Asker>("Asker");
    enter<Sloppy>("Sloppy");
}
