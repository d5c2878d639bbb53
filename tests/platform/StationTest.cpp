#include "platform/station/Station.h"

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>

#include "platform/sdf/SdfManager.h"
#include "platform/station/ControllerInterface.h"
#include "tests/platform/Files.h"
#include "tests/platform/WriteLog.h"
#include "tests/support/Expect.h"

namespace {

using sdf::DocumentError;
using sdf::Element;
using sdf::SdfManager;
using sdf::SdfObject;
using trel::GetStationElem;
using trel::GetStationLogicElem;
using trel::Station;
using namespace trel::test;

Station& station() { return Station::inst(); }

void open(const std::string& text) { station().openText(text, "cell.xml"); }

// An object that stands in the table while it lives.
class Live {
public:
    Live(std::shared_ptr<Element> element, sdf::ObjectType type)
        : object_(std::move(element), type) {
        SdfManager::inst()->objects()[object_.id()] = &object_;
    }
    ~Live() { SdfManager::Remove(object_.id()); }
    Live(const Live&) = delete;
    Live& operator=(const Live&) = delete;

private:
    SdfObject object_;
};

TEST(Station, IsANewEmptyOneWithoutAFile) {
    ASSERT_NE(GetStationElem(), nullptr);
    ASSERT_NE(GetStationLogicElem(), nullptr);
    EXPECT_EQ(station().text(), bytesOf(testFiles() / "roundtrip" / "empty_station.xml"));
    EXPECT_EQ(GetStationElem()->getId(false), Station::id);
    EXPECT_EQ(GetStationLogicElem()->getId(false), Station::logicId);
    EXPECT_EQ(GetStationLogicElem()->parent(), GetStationElem());
    EXPECT_EQ(std::any_cast<std::string>(GetStationLogicElem()->get("type")->value()),
              "StationLogic");
    EXPECT_EQ(std::any_cast<unsigned>(GetStationLogicElem()->get("parent")->value()), 0u);
}

TEST(Station, IsADocumentObjectWithTheIdOne) {
    GetStationElem();
    const SdfObject* object = SdfManager::inst()->find(1);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->element(), GetStationElem());
    EXPECT_TRUE(object->asType(sdf::ObjectType::Station));
    EXPECT_EQ(object->name(), "Station");

    open("<station id='1' name='Other'/>");
    object = SdfManager::inst()->find(1);
    EXPECT_EQ(object->element(), GetStationElem());
    EXPECT_EQ(object->name(), "Other");
    EXPECT_TRUE(std::unique_lock(SdfManager::inst()->mutex(), std::try_to_lock).owns_lock());
}

TEST(Station, FindsItsLogicByTheKeyOrTheAttributeType) {
    open("<station id='1'><smart_component id='5'><type string='Gate'/></smart_component>"
         "<smart_component id='6'><type string='StationLogic'/></smart_component></station>");
    EXPECT_EQ(GetStationLogicElem()->getId(false), 6u);
    open("<station id='1'><smart_component id='8' type='StationLogic'/></station>");
    EXPECT_EQ(GetStationLogicElem()->getId(false), 8u);
}

TEST(Station, LooksForItsLogicOnlyRightBelowItself) {
    open("<station id='1'><other><smart_component id='5' type='StationLogic'/></other></station>");
    EXPECT_EQ(GetStationLogicElem()->getId(false), 2u);
}

TEST(Station, MakesAMissingLogicWithTheIdTwoWhereThatIsFree) {
    WriteLog log;
    open("<station id='1'><smart_component id='9' type='Gate'/></station>");
    EXPECT_EQ(GetStationLogicElem()->getId(false), 2u);
    EXPECT_EQ(GetStationLogicElem()->name(), "Station Logic");
    EXPECT_EQ(GetStationLogicElem()->nextSibling(), nullptr);
    EXPECT_TRUE(log.lines.empty());
}

TEST(Station, MakesAMissingLogicBehindAllIdsWhereTwoIsTaken) {
    open("<station id='1'><smart_component id='2' type='Gate'/><part id='40'/><part id='7'/>"
         "</station>");
    EXPECT_EQ(GetStationLogicElem()->getId(false), 41u);
}

TEST(Station, RoundTripsEveryFileOfItsForm) {
    for (const auto& file : xmlFilesIn(testFiles() / "roundtrip")) {
        station().open(file);
        EXPECT_EQ(station().text(), bytesOf(file)) << file;
    }
}

TEST(Station, GivesForeignFilesItsForm) {
    for (const auto& file : xmlFilesIn(testFiles() / "foreign")) {
        station().open(file);
        EXPECT_EQ(station().text(), bytesOf(std::filesystem::path(file).replace_extension(".own")))
            << file;
    }
}

TEST(Station, OpensAnotherFileWhileNothingLives) {
    open("<station id='1' name='A'/>");
    const auto first = GetStationElem();
    open("<station id='1' name='B'/>");
    EXPECT_NE(GetStationElem(), first);
    EXPECT_EQ(GetStationElem()->name(), "B");
    EXPECT_FALSE(first->isMirrored());
}

TEST(Station, OpensNothingWhileItsLogicLives) {
    open("<station id='1' name='A'/>");
    const auto element = GetStationElem();
    {
        const Live logic(GetStationLogicElem(), sdf::ObjectType::StationLogic);
        const std::string bound =
            "the station logic lives and is bound to its station; another station takes another "
            "process";
        expectThrow<std::logic_error>(bound, [] { open("<station id='1' name='B'/>"); });
        expectThrow<std::logic_error>(bound, [] {
            station().open(testFiles() / "roundtrip" / "comments.xml");
        });
        EXPECT_EQ(GetStationElem(), element);
        EXPECT_EQ(SdfManager::inst()->find(1)->element(), element);
    }
    open("<station id='1' name='B'/>");
    EXPECT_EQ(GetStationElem()->name(), "B");
}

TEST(Station, AFaultNamesTheFileAndChangesNothing) {
    open("<station id='1' name='A'/>");
    const auto element = GetStationElem();
    const auto logic = GetStationLogicElem();
    expectThrow<DocumentError>("cell.xml:1:1: the root element is <scene>; <station> is expected",
                               [] { open("<scene id='1'/>"); });
    EXPECT_EQ(GetStationElem(), element);
    EXPECT_EQ(GetStationLogicElem(), logic);
    EXPECT_EQ(SdfManager::inst()->find(1)->element(), element);
}

TEST(Station, SavesWhatItsTextSays) {
    const TemporaryFolder folder;
    open("<station id='1' name='A'><part id='7'/></station>");
    station().save(folder / "cell.xml");
    EXPECT_EQ(bytesOf(folder / "cell.xml"), station().text());
    EXPECT_THROW(station().save(folder / "none/cell.xml"), DocumentError);
}

TEST(Station, KeepsTheLogicElementThatWasTakenOut) {
    const auto logic = GetStationLogicElem();
    logic->removeFromParent();
    EXPECT_EQ(GetStationLogicElem(), logic);
    EXPECT_EQ(station().text(), xmlHead + "<station id=\"1\" name=\"Station\" />\n");
}

// A connection that was deleted leaves its element behind.
class LeftoverConnection : public testing::Test {
protected:
    LeftoverConnection() { open(text_); }

    static std::shared_ptr<Element> cell() {
        return GetStationElem()->children("smart_component")[1];
    }

    const std::string text_ = xmlHead + R"(<station id="1">
  <smart_component id="2" name="Logic">
    <type string="StationLogic" />
  </smart_component>
  <smart_component id="3" name="Cell">
    <connection id="1" />
    <connection id="2">
      <!-- kept -->
      <index int="0" />
    </connection>
  </smart_component>
  <other id="4">
    <connection id="1" />
  </other>
  <connection id="9" />
</station>
)";
};

TEST_F(LeftoverConnection, StaysInTheFileOfAStationThatIsNotLive) {
    EXPECT_EQ(station().text(), text_);
}

TEST_F(LeftoverConnection, OfALiveAggregationIsLeftOut) {
    const Live owner(cell(), sdf::ObjectType::UserComponent);
    const auto connections = cell()->children("connection");
    {
        const SdfObject first(connections[0], sdf::ObjectType::None);
        const SdfObject second(connections[1], sdf::ObjectType::None);
        EXPECT_EQ(station().text(), text_);
    }
    const SdfObject second(connections[1], sdf::ObjectType::None);
    std::string expected = text_;
    const std::string leftover = "    <connection id=\"1\" />\n";
    expected.erase(expected.find(leftover), leftover.size());
    EXPECT_EQ(station().text(), expected);
    EXPECT_EQ(cell()->children("connection").size(), 2u) << "the document keeps it";

    const TemporaryFolder folder;
    station().save(folder / "cell.xml");
    EXPECT_EQ(bytesOf(folder / "cell.xml"), expected);
}

TEST_F(LeftoverConnection, ThatNobodyEverMirroredStays) {
    const Live live(cell(), sdf::ObjectType::UserComponent);
    cell()->append("connection")->setId(7);
    EXPECT_NE(station().text().find("<connection id=\"7\" />"), std::string::npos);
}

TEST_F(LeftoverConnection, OfAnUnknownLiveElementStays) {
    const Live owner(GetStationElem()->get("other"), sdf::ObjectType::None);
    EXPECT_EQ(station().text(), text_);
}

TEST(ControllerInterface, IsAnInterfaceOfADocumentObject) {
    struct Controller : SdfObject, trel::ControllerInterface {
        using SdfObject::SdfObject;
        void setSignalValue(unsigned id, std::variant<int, double> v, bool dynamic) override {
            last = std::to_string(id) + "=" + std::to_string(std::get<int>(v)) +
                   (dynamic ? " running" : "");
        }
        std::string last;
    } controller(Element::Create("controller"), sdf::ObjectType::Controller);
    SdfObject* const object = &controller;
    dynamic_cast<trel::ControllerInterface&>(*object).setSignalValue(3, 1, true);
    EXPECT_EQ(controller.last, "3=1 running");
}

}  // namespace
