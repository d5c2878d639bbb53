#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tests/network/Model.h"
#include "tests/network/Random.h"

namespace network {

const char* nameOf(EditKind kind);
const char* nameOf(Place place);
const char* nameOf(WalkKind walk);

/// A script of edits that somebody else's code carries out when it is called in
/// the middle of a delivery. Each is made up as the model gets there, carried out
/// in the model, and kept for the library, which has to make the same calls.
class Script : public Outsider {
public:
    /// `random` must outlive the script.
    explicit Script(Random& random) : random_(&random) {}

    void called(Model& model, Place place, Node& node) override;

    /// How much rarer than usual edits are. What the library keeps to find the
    /// connections of a value lives from one edit to the next.
    unsigned calm = 1;

    /// From here on calls are counted anew.
    void begin();

    struct Planned {
        std::size_t call;  // the first one is 1
        Edit edit;
    };
    std::vector<Planned> planned;

    /// How often each kind of edit was carried out at each place on each walk.
    template <typename Kind, typename Inner>
    using Counts = std::array<Inner, static_cast<std::size_t>(Kind::Count)>;
    Counts<EditKind, Counts<Place, Counts<WalkKind, std::size_t>>> reached{};

    /// Ends for a connection of that group; not always members that are there.
    static Connection randomEnds(Random& random, const Model& model, const Node& group);

private:
    struct Called;

    std::size_t& count(EditKind kind, Place place, WalkKind walk);
    EditKind anyKind();
    EditKind rarest(Place place, WalkKind walk);
    std::optional<Edit> choose(const Called& at, EditKind kind);
    std::optional<Edit> editConnection(const Called& at, EditKind kind);
    std::optional<Edit> editMember(const Called& at, EditKind kind);
    std::optional<Edit> removeComponent(const Called& at, EditKind kind);
    std::optional<Edit> setAgain(const Called& at, EditKind kind);
    unsigned removed(const Called& at, EditKind kind);
    std::optional<unsigned> anyConnection(const Called& at, const Node& group, bool bindings);

    Random* random_;
    std::size_t calls_ = 0;
    std::size_t depth_ = 0;
};

}  // namespace network
