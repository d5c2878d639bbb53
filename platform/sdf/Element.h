#pragma once

#include <any>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"
#include "platform/sdf/Attr.h"
#include "platform/sdf/Tag.h"

namespace sdf {

class Element;

/// One who is told of every value that is written to the document, after it
/// stands there. May write and unsubscribe while being told. Who throws refuses
/// the value: the document holds the old one again.
class TREL_PLATFORM_API ValueObserver {
public:
    virtual ~ValueObserver() = default;
    virtual void valueWritten(Element& element, const std::any& value) = 0;
};

/// A node of the document tree: a tag, a typed value of its own, and children
/// in order. Keys ("unit", "index") are children that hold a value; an
/// attribute is a key too, and is found by name like a child.
///
/// The parent owns its children; an element taken out lives on while pointers
/// to it remain. The key "value" and the element's own value are one: where a
/// child "value" stands, it holds it.
///
/// Finding a key, taking a child out and appending one cost the same however
/// many siblings there are; only after the first of a tag the next one is searched
/// for, which over all that are taken out passes each sibling once.
class TREL_PLATFORM_API Element {
    struct Key {};  // only Create makes elements

public:
    /// A place in a file: both count from 1, the column in characters; 0 in an
    /// element that a program made.
    struct Place {
        unsigned line = 0;
        unsigned column = 0;
    };

    /// What a node is. Notes are comments, stray text and processing
    /// instructions, which the document keeps for people and other programs.
    enum class Kind : unsigned char { Element, Attribute, Comment, Text, Instruction };

    /// A new element that stands in no document yet.
    /// \throws std::invalid_argument if `tag` is no XML name.
    static std::shared_ptr<Element> Create(std::string_view tag);

    /// A new note (see Kind) with the text that it keeps, or attribute; an
    /// instruction has its target as tag.
    /// \throws std::invalid_argument if the tag of an instruction or attribute is
    /// no XML name.
    static std::shared_ptr<Element> CreateNote(Kind kind, std::string_view tag,
                                               std::string_view text);

    Element(Key, Kind kind, std::string_view tag);
    ~Element();
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    std::string_view tag() const { return tag_.text(); }
    Kind kind() const { return kind_; }
    Place place() const { return place_; }
    void setPlace(Place place) { place_ = place; }

    /// The element, with a share in keeping it alive.
    std::shared_ptr<Element> shared_from_this();

    /// The parent, or null when the element stands alone or is the root.
    std::shared_ptr<Element> parent() const;

    /// The element's place in the tree for messages, such as
    /// "station/smart_component Gripper/property 3".
    std::string path() const;

    /// The object name; empty when there is none.
    const std::string& name() const;
    bool hasName() const { return hasName_; }
    void setName(std::string name);

    /// The object id. Without one: 0 if `orZero`, otherwise it
    /// \throws std::logic_error.
    unsigned getId(bool orZero) const;

    /// 0 takes the id away.
    std::shared_ptr<Element> setId(unsigned id);

    /// The key `name`, created empty if missing; the element itself for an empty
    /// name. A new "value" takes over the element's own value.
    /// \throws std::invalid_argument if a new key's name is no XML name.
    std::shared_ptr<Element> touch(std::string_view name);

    /// The key `name`, or null; the element itself for an empty name.
    std::shared_ptr<Element> get(std::string_view name);

    /// The child elements whose tag is `name`, in document order, as they stand
    /// at the call.
    std::vector<std::shared_ptr<Element>> children(std::string_view name) const;

    /// A new empty child, placed last.
    std::shared_ptr<Element> append(std::string_view tag);

    /// Places an element as last child, out of wherever it stood before.
    /// \throws std::invalid_argument if it is null, or contains this element; it
    /// then stands where it stood.
    std::shared_ptr<Element> append(std::shared_ptr<Element> child);

    std::shared_ptr<Element> appendObject(std::string_view tag, unsigned id, std::string_view name);

    /// Does nothing to an element without parent.
    void removeFromParent() noexcept;

    /// Moves a child to just before `next`, another child, or to the end for
    /// null.
    void moveBefore(Element& child, const Element* next) noexcept;

    /// \name Typed reads
    /// The value of the key `name`, or the own value for an empty name,
    /// converted. What is missing or empty reads as zero, false, empty, or the
    /// pose at the origin. Numbers are cut towards zero, text is parsed.
    /// \throws std::invalid_argument when the value cannot be converted.
    /// @{
    int asInt(std::string_view name) const;
    unsigned asUInt(std::string_view name) const;
    unsigned long long asUInt64(std::string_view name) const;
    double asDouble(std::string_view name) const;
    bool asBool(std::string_view name) const;
    std::string asString(std::string_view name) const;
    trel::rob::Vec3Template<double> asVec3(std::string_view name) const;
    trel::rob::PoseTemplate<double> asPose(std::string_view name) const;
    /// @}

    /// The own value; empty when there is none.
    const std::any& value() const;

    /// Gives the element a value of one of the types that `Attr` names; an empty
    /// one takes the value away.
    /// \throws std::invalid_argument for any other type, and what an observer
    /// throws; the value is then the old one.
    void setValue(const std::any& value);

    /// Gives the element the value that it had when the document was saved. That
    /// is no news: observers are not told.
    /// \throws std::invalid_argument for a type that `Attr` does not name.
    void restoreValue(std::any value);

    /// Reads the own value from its text form, in the type that it has; an
    /// element without a value takes the text as text.
    /// \throws std::invalid_argument for text that is no such value; nothing has
    /// changed.
    void setValueFromString(std::string_view text);

    /// The own value in text form, see valuetext::render.
    std::string getStringFromValue() const;

    /// Adds the key `name` as an attribute, or replaces its value.
    /// \throws std::invalid_argument for text that is no value of that type.
    void addAttribute(std::string_view name, std::string_view type, std::string_view value);

    /// The value as it stands in this very node, null when there is none; for a note,
    /// its text.
    const std::any* ownValue() const { return value_.has_value() ? &value_ : nullptr; }

    /// \name All nodes in turn, notes and attributes included
    /// @{
    const Element* firstChild() const { return first_; }
    const Element* nextSibling() const { return next_; }
    /// @}

    /// `observer` is told of every value written to any document, until
    /// `Unsubscribe`; it must live that long.
    static void Subscribe(ValueObserver& observer);
    static void Unsubscribe(ValueObserver& observer);

    /// Whether a live document object mirrors this element.
    bool isMirrored() const { return mirrors_ > 0; }

    /// Whether one mirrored it before, and none does now.
    bool isLeftBehind() const { return wasMirrored_ && mirrors_ == 0; }

private:
    friend class DocumentReader;
    friend class ElementMirror;
    class TagIndex;
    struct Rare;

    static std::shared_ptr<Element> Make(Kind kind, std::string_view tag);

    Element* find(std::string_view name) const;
    Element* findAnew(std::string_view name) const;
    std::shared_ptr<Element> touchAnew(std::string_view name);
    void setValueOfHolder(const std::any& value);
    void prefetchTree() const;
    Element* last() const { return first_ ? first_->prev_ : nullptr; }
    bool isKey(std::string_view name) const { return kind_ != Kind::Instruction && tag() == name; }
    bool isIndexed() const;
    TagIndex& index() const;
    Rare& rare();
    const Element& holder() const;
    Element& holder();
    const std::any& valueOf(std::string_view name) const;
    void makeRoomFor(const Element& child);
    void makeRoomInIndexFor(const Element& child);
    void appendNew(std::shared_ptr<Element> child);
    void insertBefore(std::shared_ptr<Element>&& child, Element* next) noexcept;
    std::shared_ptr<Element> unlink(Element& child) noexcept;
    template <typename T>
    T as(std::string_view name) const;

    // What an element knows itself by. While it stands in a parent it keeps itself alive,
    // for the parent to end: the pointers of a tree are plain ones, and who is given an
    // element touches no other.
    class Self {
    public:
        Self() noexcept : weak_() {}
        ~Self() { weak_.~weak_ptr(); }  // who dies is not kept alive
        Self(const Self&) = delete;
        Self& operator=(const Self&) = delete;

        void know(const std::shared_ptr<Element>& self) noexcept { weak_ = self; }
        const std::shared_ptr<Element>& kept() const { return strong_; }
        std::shared_ptr<Element> found() const { return weak_.lock(); }

        void keep(std::shared_ptr<Element>&& self) noexcept {
            weak_.~weak_ptr();
            new (&strong_) std::shared_ptr<Element>(std::move(self));
        }

        std::shared_ptr<Element> release() noexcept {
            std::shared_ptr<Element> self = std::move(strong_);
            strong_.~shared_ptr();
            // Who has no other owner is about to die or to be kept anew.
            if (self.use_count() == 1)
                new (&weak_) std::weak_ptr<Element>();
            else
                new (&weak_) std::weak_ptr<Element>(self);
            return self;
        }

    private:
        union {
            std::weak_ptr<Element> weak_;
            std::shared_ptr<Element> strong_;
        };
    };

    // What finding and writing a key needs stands together.
    Tag tag_;
    unsigned id_ = 0;
    Self self_;
    Element* next_ = nullptr;
    Element* first_ = nullptr;              // of the children
    mutable Element* lastFound_ = nullptr;  // the first child of its tag
    std::any value_;
    Element* prev_ = nullptr;  // of the first child the last one
    Element* parent_ = nullptr;
    std::unique_ptr<Rare> rare_;
    Place place_;
    unsigned mirrors_ = 0;
    Kind kind_;
    bool wasMirrored_ = false;
    bool hasName_ = false;
    unsigned char childCount_ = 0;  // while there is no index
};

/// The element of a document object. While the object or a copy of it lives,
/// its element counts as mirrored.
class TREL_PLATFORM_API ElementMirror {
public:
    /// \throws std::invalid_argument for a null element.
    explicit ElementMirror(std::shared_ptr<Element> element);
    ElementMirror(const ElementMirror& other);
    ElementMirror& operator=(const ElementMirror& other);
    ~ElementMirror();

    const std::shared_ptr<Element>& get() const { return element_; }

private:
    std::shared_ptr<Element> element_;
};

}  // namespace sdf
