#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "platform/sdf/Element.h"

namespace sdf {

/// Why a file cannot be read or written. what() is one line: "FILE:LINE:COLUMN:
/// what is wrong; what is expected", without line and column where there is no
/// such place.
class TREL_PLATFORM_API DocumentError : public std::runtime_error {
public:
    DocumentError(const std::string& file, Element::Place place, const std::string& fault);

    const std::string& file() const { return file_; }
    Element::Place place() const { return place_; }
    /// The message without the place.
    const std::string& fault() const { return fault_; }

private:
    std::string file_;
    Element::Place place_;
    std::string fault_;
};

/// An id or a value in a file that a document cannot hold: no number, no value
/// of its type, or a second one.
struct TREL_PLATFORM_API ValueFault {
    enum class Kind { Id, NoId, Value, SecondValue };

    Kind kind;
    Element::Place place;
    std::string fault;                 // what is wrong; what is expected
    std::shared_ptr<Element> element;  // goes without it
};

/// A document file: a root element, and the notes around it. Its form is made to
/// be read and compared by people, one key or value to a line:
///
///     <signal id="1">
///       <name string="Start" />
///       <value int="0" />
///     </signal>
///
/// The attributes "id" and "name" are the object id and name; an attribute named
/// after a type of value (see valuetext) is the element's own value in that type;
/// any other attribute, comment and element is kept as it is. An element with
/// text among its children is kept on one line with all that it contains, for
/// there every blank counts. UTF-8 throughout.
///
/// A file in another layout or other spellings (single quotes, CR LF, CDATA,
/// references, "2.50" for "2.5") is read too, and is in this form once saved. A
/// document type is refused.
class TREL_PLATFORM_API Document {
public:
    /// Deeper nesting is refused, when reading and when writing.
    static constexpr unsigned maxDepth = 256;

    /// Reads a whole file.
    /// \throws DocumentError for a file that cannot be read or is no document.
    static Document read(const std::filesystem::path& file);
    static Document read(const std::filesystem::path& file, std::vector<ValueFault>& faults);

    /// The same from text; `name` stands for the file in messages.
    static Document fromText(std::string_view text, const std::string& name);

    /// The same, but goes on where ids or values are none, and tells which.
    static Document fromText(std::string_view text, const std::string& name,
                             std::vector<ValueFault>& faults);

    explicit Document(std::shared_ptr<Element> root);

    const std::shared_ptr<Element>& root() const { return root_; }

    /// Says which elements are left out of the text with all that they contain.
    using LeftOut = std::function<bool(const Element&)>;

    /// The document in its own form.
    /// \throws DocumentError for text that XML cannot hold.
    std::string text(const LeftOut& leftOut = {}) const;

    /// Writes the text to a file. Another file in the same folder is written,
    /// synced and put in its place, and the folder synced: whenever the process
    /// dies or the power goes, the old file or the new one is there, whole. A link
    /// is followed, and the permissions of an old file are kept, and its owner
    /// where this user may give files away. Another hard link to the old file goes
    /// on naming the old text.
    ///
    /// The other file has no name until it is whole, then for the length of two
    /// calls ".saving-" and a number; where the file system knows no files without
    /// names, all along. A process that dies meanwhile leaves that name behind; the
    /// next save into the folder removes it.
    /// \throws DocumentError when that fails; the old file is then unchanged and
    /// no other is left. Only where the folder cannot be synced the new one stands.
    void save(const std::filesystem::path& file, const LeftOut& leftOut = {}) const;

private:
    static Document parsed(std::string_view text, const std::string& name,
                           std::vector<ValueFault>* faults);

    std::shared_ptr<Element> root_;
    std::vector<std::shared_ptr<Element>> before_;  // notes ahead of the root
    std::vector<std::shared_ptr<Element>> after_;   // and behind it
};

}  // namespace sdf
