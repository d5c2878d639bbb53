#pragma once

#include <compare>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace trel::host {

/// A signal or property of a component, or a signal of a controller, by ids.
struct Member {
    enum class Kind { Signal, Property };

    unsigned object = 0;
    Kind kind = Kind::Signal;
    unsigned id = 0;

    friend auto operator<=>(const Member&, const Member&) = default;
};

/// Why a path names nothing, or more than one thing.
class NameError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// How many names a path has: deeper nesting, or a ring, begins with an id.
inline constexpr unsigned mostNames = 64;

/// A name as it stands in a path: in quotes where it would be read otherwise.
std::string quoted(const std::string& name);

/// The path of names of a component or controller, "Cell/Gripper"; "#5" for one
/// that is not there.
std::string pathOf(unsigned objectId);

/// The path of names of a member, "Cell/Gripper.Close".
std::string pathOf(const Member& member);

/// Finds what paths of names stand for, among the objects that live when it is
/// made.
///
///     Cell/Gripper.Close        the member "Close" of "Gripper" in "Cell"
///     Cell/"Gripper 1.2".Close  a name with special characters, in quotes
///     #5.Close  Cell/Gripper.#3 ids in place of names
///     Gripper.signal#3          the signal 3, where a property has that id too
class Names {
public:
    Names();

    /// The member that `path` stands for.
    /// \throws NameError saying what is wrong and what to do; for an ambiguous
    /// path with all that it may stand for.
    Member member(std::string_view path) const;

    /// The component or controller that `path` stands for, the same way.
    unsigned object(std::string_view path) const;

    /// Whether a path goes on to a signal or property.
    /// \throws NameError for what is no path.
    static bool isOfMember(std::string_view path);

private:
    unsigned object(const std::vector<std::string_view>& steps, std::string_view path) const;
    std::vector<unsigned> childrenLike(unsigned parent, std::string_view step) const;

    std::multimap<unsigned, unsigned> children_;  // by parent
};

}  // namespace trel::host
