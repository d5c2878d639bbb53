#include <gtest/gtest.h>
#include <pthread.h>

#include <QString>
#include <array>
#include <exception>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>

#include "smartcomp/Hold.h"
#include "smartcomp/Manager.h"
#include "tests/smartcomp/Cell.h"

// Deliveries nest: each hop of a chain lies on the stack of the one before.
//
//   Cell ( 100.2 -> 101.1, 101.2 -> 102.1, ... )        signals, static and dynamic
//   Cell ( 100.1 -> 101.1, 101.1 -> 102.1, ... )        bindings
//   100 ( 100.1 -> 101.1, 101 ( 101.1 -> 102.1, ... ))  groups in groups

#if defined(__SANITIZE_ADDRESS__)
#define TREL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TREL_SANITIZED 1
#endif
#endif

namespace trel::test {
namespace {

constexpr std::size_t kibi = 1024;
constexpr std::size_t mebi = 1024 * kibi;

#ifdef TREL_SANITIZED
constexpr std::size_t stackForChains = 64 * mebi;
#else
constexpr std::size_t stackForChains = 8 * mebi;
#endif

#if defined(NDEBUG) && !defined(TREL_SANITIZED)
constexpr bool isLean = true;
#else
constexpr bool isLean = false;  // frames of such a build are not what they cost released
#endif

constexpr std::size_t mostBytesPerHop = 320;

constexpr unsigned parentId = 10;
constexpr unsigned firstRelay = 100;
constexpr unsigned hops = 10'000;
constexpr unsigned lastRelay = firstRelay + hops;

// Stores what reaches its input 1, tells of it and hands it on to its output 2;
// a text it only hands on.
class Relay : public SmartComponent {
public:
    explicit Relay(ElementPtr element)
        : SmartComponent(std::move(element), sdf::ObjectType::Component) {}

    void handleInputSignal(unsigned signalId, int value, long long time) override {
        signalAt(signalId).setValue(value);
        notifySignalValueChanged(signalId);
        handleOutputSignal(2, value, time);
    }

    void setStaticInputSignal(unsigned signalId, SignalValue value) override {
        SmartComponent::setStaticInputSignal(signalId, value);
        setStaticOutputSignal(2, value);
        endSetSignalValue(signalId);
    }

    void setPropertyValue(unsigned id, const std::string& value) override {
        const smartcomp::Hold hold(*this);
        if (!shouldSetProperty(id, value)) return;
        SmartComponent::setPropertyValue(id, value);
        endSetPropertyValue(id);
    }

    void execute(long long) override {}
    void readPropertyValues() override {}

private:
    Alive alive_{this};
};

SmartComponent* makeRelay(ElementPtr element) { return new Relay(std::move(element)); }

// Notes where on the stack the first and the last notice of a chain were given.
class Depth : private broker::Listener {
public:
    Depth() { broker::SignalBroker::subscribe(*this); }
    ~Depth() override { broker::SignalBroker::unsubscribe(*this); }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;

    std::size_t bytesPerHop() const { return static_cast<std::size_t>(first_ - last_) / hops; }

private:
    void scSignalValueChanged(unsigned signalId, unsigned componentId) override {
        if (signalId == 1) note(componentId, static_cast<char*>(__builtin_frame_address(0)));
    }
    void scPropertyValueChanged(unsigned, unsigned componentId) override {
        note(componentId, static_cast<char*>(__builtin_frame_address(0)));
    }
    void note(unsigned componentId, char* place) {
        if (componentId == firstRelay) first_ = place;
        if (componentId == lastRelay) last_ = place;
    }

    char* first_ = nullptr;
    char* last_ = nullptr;
};

void* runFunction(void* function) {
    (*static_cast<std::function<void()>*>(function))();
    return nullptr;
}

// Runs on a thread with a stack of that size, and throws here what it throws.
void onStackOf(std::size_t bytes, const std::function<void()>& action) {
    std::exception_ptr thrown;
    std::function<void()> guarded = [&] {
        try {
            action();
        } catch (...) {
            thrown = std::current_exception();
        }
    };
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, runFunction, &guarded), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
    if (thrown) std::rethrow_exception(thrown);
}

void expectOrderlyEnd(std::size_t bytes, const std::function<void()>& action) {
    expectThrow<std::runtime_error>(
        "the deliveries nest too deeply for the stack of this thread; look for a ring of "
        "bindings or of inputs that nothing ends",
        [&] { onStackOf(bytes, action); });
    auto& mutex = sdf::SdfManager::inst()->mutex();
    ASSERT_TRUE(mutex.try_lock()) << "the lock of the object table is still held";
    mutex.unlock();
}

class DepthOfChains : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        smartcomp::Manager::inst()->registerType("Relay", makeRelay, makeRelay,
                                                 [] { return QString("hands on"); });
        logic();
    }

    // The relays, in one cell, with connections or bindings from member to member.
    static void chainRelays(unsigned from, unsigned to, bool bindings) {
        Draft cell("Box", parentId, "Cell");
        for (unsigned i = 0; i != hops; ++i)
            cell.connection(1 + i, {firstRelay + i, from}, {firstRelay + i + 1, to},
                            bindings ? std::nullopt : std::optional(i));
        cell.make<Box>();
        for (unsigned id = firstRelay; id <= lastRelay; ++id)
            Draft("Relay", id, "R")
                .in(parentId)
                .property(1, "P", "String", std::string("old"))
                .signal(1, "In", "DigitalInput")
                .signal(2, "Out", "DigitalOutput")
                .make<Relay>();
    }

    static void nestGroups() {
        for (unsigned id = firstRelay; id <= lastRelay; ++id) {
            Draft group("Box", id, "G");
            if (id != firstRelay) group.in(id - 1);
            group.signal(1, "In", "DigitalInput");
            if (id != lastRelay) group.connection(1, {id, 1}, {id + 1, 1}, 0u);
            group.make<Box>();
        }
    }

    static SmartComponent& at(unsigned id) {
        return dynamic_cast<SmartComponent&>(*sdf::SdfManager::inst()->find(id));
    }

    // Sends a value along the chain by `action`, and looks at the bytes of stack for
    // one hop.
    static void measure(const char* what, const std::function<void()>& action) {
        const Depth depth;
        onStackOf(stackForChains, action);
        std::cout << what << ": " << depth.bytesPerHop() << " bytes of stack per hop\n";
        if (isLean) {
            EXPECT_LE(depth.bytesPerHop(), mostBytesPerHop);
        }
    }
};

TEST_F(DepthOfChains, ADynamicValuePassesTenThousandHops) {
    chainRelays(2, 1, false);
    measure("dynamic", [] { at(firstRelay).handleSignalValue(1, 7, 5); });
    EXPECT_EQ(signalOf(at(lastRelay), 2).getValue(), SignalValue(7));
    EXPECT_EQ(documentValue(at(lastRelay), 2), "int 7");
}

TEST_F(DepthOfChains, AStaticValuePassesTenThousandHops) {
    chainRelays(2, 1, false);
    measure("static", [] { at(firstRelay).setStaticSignalValue(1, 7); });
    EXPECT_EQ(signalOf(at(lastRelay), 2).getValue(), SignalValue(7));
    EXPECT_EQ(documentValue(at(lastRelay), 2), "int 7");
}

TEST_F(DepthOfChains, ATextPassesTenThousandHops) {
    chainRelays(1, 1, true);
    measure("property", [] { at(firstRelay).setPropertyValue(1, "new"); });
    EXPECT_EQ(at(lastRelay).getProperty(1)->value(), "new");
    EXPECT_EQ(elementOf(at(lastRelay), "property", 1)->getStringFromValue(), "new");
}

TEST_F(DepthOfChains, ADynamicValuePassesTenThousandGroupsInGroups) {
    nestGroups();
    measure("nested, dynamic", [] { at(firstRelay).handleSignalValue(1, 7, 5); });
    EXPECT_EQ(documentValue(at(lastRelay), 1), "int 7");
}

TEST_F(DepthOfChains, AStaticValuePassesTenThousandGroupsInGroups) {
    nestGroups();
    measure("nested, static", [] { at(firstRelay).setStaticSignalValue(1, 7); });
    EXPECT_EQ(documentValue(at(lastRelay), 1), "int 7");
}

//   100.2 -> 101.2 -> 102.2 ...
TEST_F(DepthOfChains, ARowOfOutputsTooLongForTheStackEndsInAnException) {
    chainRelays(2, 2, false);
    expectOrderlyEnd(256 * kibi, [] { at(firstRelay).setStaticSignalValue(2, 7); });
    EXPECT_EQ(documentValue(at(firstRelay), 2), "int 7");
    EXPECT_EQ(documentValue(at(lastRelay), 2), "int 0");

    for (unsigned id = firstRelay; id <= lastRelay; ++id) at(id).clearMarks();
    onStackOf(stackForChains, [] { at(firstRelay).handleSignalValue(2, 8, 5); });
    EXPECT_EQ(documentValue(at(lastRelay), 2), "int 8");
}

// Recursion that nothing ends, on stacks of all sizes.

class EndlessRecursion : public CellTest, public ::testing::WithParamInterface<std::size_t> {
protected:
    static void expectOrderlyEnd(const std::function<void()>& action) {
        trel::test::expectOrderlyEnd(GetParam(), action);
    }
};

//   a.1 <-> b.1, both with the bare operation
TEST_P(EndlessRecursion, RoundAnUnframedRingOfBindingsEndsInAnException) {
    logic();
    Box& cell = Draft("Box", parentId, "Cell").make<Box>();
    const auto draft = [](unsigned id) {
        return Draft("Plain", id, "C").in(parentId).property(1, "P", "String", std::string("old"));
    };
    Plain& a = draft(11).make<Plain>();
    Plain& b = draft(12).make<Plain>();
    bind(cell, {11, 1}, {12, 1});
    const unsigned back = bind(cell, {12, 1}, {11, 1});

    expectOrderlyEnd([&] { a.setPropertyValue(1, "new"); });
    EXPECT_EQ(a.getProperty(1)->value(), "new");
    EXPECT_EQ(b.getProperty(1)->value(), "new");

    cell.deleteBinding(back);
    onStackOf(GetParam(), [&] { a.setPropertyValue(1, "newer"); });
    EXPECT_EQ(elementOf(b, "property", 1)->getStringFromValue(), "newer");
}

//   Cell.1 -> Cell.1
TEST_P(EndlessRecursion, OfAnInputWiredToItselfEndsInAnException) {
    logic();
    Box& cell = Draft("Box", parentId, "Cell").signal(1, "In", "DigitalInput").make<Box>();
    const unsigned ring = connect(cell, {parentId, 1}, {parentId, 1});

    expectOrderlyEnd([&] { cell.handleSignalValue(1, 1, 5); });
    EXPECT_EQ(documentValue(cell, 1), "int 1");

    cell.deleteConnection(ring);
    onStackOf(GetParam(), [&] { cell.handleSignalValue(1, 2, 6); });
    EXPECT_EQ(documentValue(cell, 1), "int 2");
}

std::string nameOfStack(const ::testing::TestParamInfo<std::size_t>& size) {
    return std::to_string(size.param / kibi) + "KiB";
}

INSTANTIATE_TEST_SUITE_P(Stacks, EndlessRecursion,
                         ::testing::Values(256 * kibi, 1 * mebi, 8 * mebi), nameOfStack);

}  // namespace
}  // namespace trel::test
