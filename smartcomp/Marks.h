#pragma once

#include <optional>
#include <unordered_map>
#include <utility>

namespace trel::smartcomp {

/// What is being set on the current call chain, by id, with the value it is set
/// to. Mostly that is one member; its mark stands apart, and costs neither hashing
/// nor memory. An entry of the table is kept when its mark ends, for the next one.
template <typename Value>
class Marks {
public:
    Marks() = default;
    // A copy has the same marks.
    Marks(const Marks& other) : one_(other.one_), table_(other.table_) {}
    Marks& operator=(const Marks& other) {
        one_ = other.one_;
        table_ = other.table_;
        return *this;
    }

    bool empty() const { return !one_ && table_.empty(); }

    /// The value that `id` is being set to; null when it is not being set.
    const Value* find(unsigned id) const {
        if (one_ && one_->first == id) return &one_->second;
        if (table_.empty()) return nullptr;
        const auto entry = table_.find(id);
        return entry == table_.end() ? nullptr : &entry->second;
    }

    /// A mark that is there keeps its value.
    void begin(unsigned id, const Value& value) {
        if (!one_ && table_.empty())
            one_.emplace(id, value);
        else if (!find(id))
            enter(id, value);
    }

    /// Nothing when there is none.
    void end(unsigned id) {
        if (one_ && one_->first == id)
            one_.reset();
        else if (!table_.empty())
            leave(id);
    }

    void clear() {
        one_.reset();
        table_.clear();
    }

private:
    using Table = std::unordered_map<unsigned, Value>;

    void enter(unsigned id, const Value& value) {
        if (spare_.empty()) {
            table_.emplace(id, value);
            return;
        }
        spare_.key() = id;
        spare_.mapped() = value;
        table_.insert(std::move(spare_));
    }

    void leave(unsigned id) {
        if (auto entry = table_.extract(id)) spare_ = std::move(entry);
    }

    std::optional<std::pair<unsigned, Value>> one_;
    Table table_;  // the others
    typename Table::node_type spare_;
};

}  // namespace trel::smartcomp
