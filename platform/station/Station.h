#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/sdf/Document.h"
#include "platform/sdf/Element.h"
#include "platform/sdf/SdfObject.h"

namespace trel {

/// The station of this process: one document, whose root element is itself a
/// document object, with id 1 in the object table. Without a file it is a new
/// empty station.
///
/// The station logic is bound to its element for good. Once it lives, no other
/// file can be opened: that takes another process.
class TREL_PLATFORM_API Station {
public:
    /// The id of the station object.
    static constexpr unsigned id = 1;

    /// The id that a new station gives its station logic.
    static constexpr unsigned logicId = 2;

    /// Gives a document that has no element for the station logic one.
    /// \throws sdf::DocumentError if it is no station.
    static void complete(sdf::Document& document, const std::string& name);

    /// The one station, which outlives every static object.
    static Station& inst();

    /// Reads a station file in place of what the station held. A file without an
    /// element for the station logic gets one.
    /// \throws sdf::DocumentError for a file that is no station; the station is
    /// unchanged.
    /// \throws std::logic_error while the station logic lives.
    void open(const std::filesystem::path& file);

    /// The same with a document that was read, or from text; `name` stands for the
    /// file in messages.
    void open(sdf::Document document, const std::string& name);
    void openText(std::string_view text, const std::string& name);

    /// Writes the station to a file, see sdf::Document::save. The "connection"
    /// elements of a live aggregation that no connection mirrors are left out:
    /// a deleted connection leaves its element behind.
    /// \throws sdf::DocumentError when the station cannot be written.
    void save(const std::filesystem::path& file) const;

    /// The text that `save` writes.
    std::string text() const;

    const std::shared_ptr<sdf::Element>& element() const { return document_.root(); }
    const std::shared_ptr<sdf::Element>& logicElement() const { return logic_; }

private:
    Station();
    void adopt(sdf::Document document);

    sdf::Document document_;
    std::shared_ptr<sdf::Element> logic_;
    std::unique_ptr<sdf::SdfObject> object_;
};

/// The station element, under which every "smart_component" element stands;
/// never null.
TREL_PLATFORM_API std::shared_ptr<sdf::Element> GetStationElem();

/// The element of the station logic; never null.
TREL_PLATFORM_API std::shared_ptr<sdf::Element> GetStationLogicElem();

}  // namespace trel
