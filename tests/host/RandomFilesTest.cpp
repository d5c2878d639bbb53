#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "host/StationMap.h"
#include "platform/sdf/Document.h"
#include "tests/host/Program.h"
#include "tests/network/Random.h"

// TREL_RANDOM_FILES is how many files are made, TREL_RANDOM_SEED where they begin.

namespace trel::test {

namespace {

using network::Random;
using sdf::Element;
using ::testing::HasSubstr;
using ::testing::Not;

unsigned numberFrom(const char* variable, unsigned usual) {
    const char* const text = std::getenv(variable);
    return text ? static_cast<unsigned>(std::stoul(text)) : usual;
}

// Every element below the root.
std::vector<host::ElementPtr> elementsOf(Element& root) {
    std::vector<host::ElementPtr> all;
    for (const Element* node = root.firstChild(); node; node = node->nextSibling()) {
        if (node->kind() != Element::Kind::Element) continue;
        auto element = const_cast<Element*>(node)->shared_from_this();
        const auto inner = elementsOf(*element);
        all.push_back(std::move(element));
        all.insert(all.end(), inner.begin(), inner.end());
    }
    return all;
}

host::ElementPtr copyOf(const Element& element) {
    const auto copy = Element::Create(element.tag());
    if (element.getId(true) != 0) copy->setId(element.getId(true));
    if (element.hasName()) copy->setName(element.name());
    if (element.ownValue()) copy->setValue(*element.ownValue());
    for (const Element* node = element.firstChild(); node; node = node->nextSibling())
        if (node->kind() == Element::Kind::Element) copy->append(copyOf(*node));
    return copy;
}

// Damages a station in one way or another, which stays well-formed.
void damage(Element& root, Random& random) {
    static const std::vector<unsigned> ids = {0, 1, 2, 10, 11, 12, 20, 21, 90, 4294967295};
    static const std::vector<std::string> texts = {"",
                                                   "1",
                                                   "0.5",
                                                   "x/y.z\"",
                                                   "DigitalInput",
                                                   "DigitalOutput",
                                                   "AnalogInput",
                                                   "GroupOutput",
                                                   "Group",
                                                   "Buffer",
                                                   "Timer",
                                                   "Gripper",
                                                   "ObjectId",
                                                   "Double",
                                                   "Bare",
                                                   "StationLogic"};
    static const std::vector<std::string> tags = {"child",  "signal",         "property",
                                                  "xy",     "connection",     "parent",
                                                  "value",  "controller",     "index",
                                                  "source", "smart_component"};
    const auto all = elementsOf(root);
    if (all.empty()) return;
    const auto element = random.from(all);
    const auto end = (static_cast<unsigned long long>(random.from(ids)) << 32) | random.below(5);
    switch (random.below(10)) {
        case 0: return element->removeFromParent();
        case 1: element->parent()->append(copyOf(*element)); return;
        case 2: random.from(all)->append(copyOf(*element)); return;
        case 3: element->setId(random.from(ids)); return;
        case 4: return element->setName(random.from(texts));
        case 5: return element->setValue(std::any(random.from(texts)));
        case 6: return element->setValue(std::any(random.from(ids)));
        case 7: return element->setValue(std::any(end));
        case 8: return element->setValue({});
        default: element->append(random.from(tags))->setValue(std::any(random.from(ids))); return;
    }
}

class RandomFiles : public FolderTest {
protected:
    static unsigned seed() { return numberFrom("TREL_RANDOM_SEED", 1); }
    static unsigned count() { return numberFrom("TREL_RANDOM_FILES", 30); }
    static std::filesystem::path example() {
        return sourceFolder() / "examples/pick_and_place/station.xml";
    }
};

}  // namespace

// What check calls an error is what keeps a file from being loaded, and the
// reverse; neither ever fails.
TEST_F(RandomFiles, AreRefusedByARunExactlyWhereCheckFindsAnError) {
    unsigned refused = 0;
    for (unsigned i = 0; i != count(); ++i) {
        Random random(seed() + i);
        auto document = sdf::Document::read(
            random.oneIn(2) ? example() : sourceFolder() / "tests/files/help/station.xml");
        for (unsigned damages = 1 + random.below(3); damages != 0; --damages)
            damage(*document.root(), random);
        const std::string file = path("s.xml");
        document.save(file);
        const Result check = station({"check", file});
        const Result run = station({"run", file, "--until", "0s"});
        const bool isRefused = check.out.find(": error: ") != std::string::npos;
        refused += isRefused ? 1 : 0;
        ASSERT_EQ(check.code, isRefused ? 2 : 0) << "seed " << seed() + i << check.err;
        ASSERT_EQ(run.code == 2, isRefused) << "seed " << seed() + i << '\n'
                                            << check.out << run.err;
        ASSERT_THAT(check.out, Not(HasSubstr("type-crashes"))) << "seed " << seed() + i;
    }
    EXPECT_GT(refused, count() / 4);
    EXPECT_LT(refused, count());
}

namespace {

// The arguments of an edit of something in the station, which may make no sense.
std::vector<std::string> randomEdit(const std::string& file, Random& random) {
    const auto document = sdf::Document::read(file);
    const host::StationMap map(*document.root());
    std::vector<std::string> members;
    std::vector<std::string> objects;
    for (const auto& object : map.objects()) {
        objects.push_back(fmt::format("#{}", object.id));
        for (const std::string tag : {"signal", "property"})
            for (const auto& member : object.element->children(tag))
                members.push_back(fmt::format("#{}.{}#{}", object.id, tag, member->getId(true)));
    }
    if (members.empty()) return {"remove", file};
    const std::string one = random.from(members);
    const std::string other = random.from(members);
    switch (random.below(8)) {
        case 0: return {"set", file, one, std::to_string(random.below(3))};
        case 1: return {"connect", file, one, other, "--at", "first"};
        case 2: return {"connect", file, one, other};
        case 3: return {"disconnect", file, one, other};
        case 4: return {"move", file, one, other, "last"};
        case 5:
            return {"rename", file, random.from(objects), fmt::format("New {}", random.below(9))};
        case 6: return {"rename", file, one, fmt::format("New {}", random.below(9))};
        default: return {"remove", file, random.oneIn(4) ? random.from(objects) : one};
    }
}

}  // namespace

// Each edit is done, or refused and nothing is changed.
TEST_F(RandomFiles, StayLoadableWhateverEditsAreMade) {
    unsigned done = 0;
    const std::string file = path("s.xml");
    for (unsigned i = 0; i != count(); ++i) {
        Random random(seed() + i);
        if (i % 30 == 0)
            std::filesystem::copy_file(example(), file,
                                       std::filesystem::copy_options::overwrite_existing);
        const std::string before = readFile(file);
        const Result edit = station(randomEdit(file, random));
        ASSERT_TRUE(edit.code == 0 || edit.code == 3) << "seed " << seed() + i << edit.err;
        if (edit.code == 0)
            ++done;
        else
            ASSERT_TRUE(readFile(file) == before) << "seed " << seed() + i;
        ASSERT_EQ(station({"check", file}).code, 0) << "seed " << seed() + i << edit.out;
    }
    EXPECT_GT(done, count() / 8);
}

}  // namespace trel::test
