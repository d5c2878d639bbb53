#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

namespace trel::smartcomp {

/// What is being set on the current call chain, by id, with the value it is set
/// to. Mostly that is one member; its mark stands apart, and costs neither hashing
/// nor memory.
template <typename Value>
class Marks {
public:
    Marks() = default;
    // A copy has the same marks.
    Marks(const Marks& other)
        : one_(other.one_), others_(other.others_ ? new Others(*other.others_) : nullptr) {}
    Marks& operator=(const Marks& other) {
        Marks copy(other);
        one_.swap(copy.one_);
        others_.swap(copy.others_);
        return *this;
    }

    bool empty() const { return !one_ && noOthers(); }

    /// The value that `id` is being set to; null when it is not being set.
    const Value* find(unsigned id) const {
        if (one_ && one_->first == id) return &one_->second;
        return noOthers() ? nullptr : others_->find(id);
    }

    /// All of them.
    std::unordered_map<unsigned, Value> entries() const {
        auto all = others_ ? others_->entries() : std::unordered_map<unsigned, Value>();
        if (one_) all.insert(*one_);
        return all;
    }

    /// A mark that is there keeps its value. Another is made of what is given where it
    /// stands: what is written as a part and read back as a whole keeps the processor waiting.
    template <typename Given>
    void begin(unsigned id, const Given& value) {
        if (!one_ && noOthers())
            one_.emplace(id, value);
        else if (!find(id))
            beginAnother(id, value);
    }

    /// Nothing when there is none.
    void end(unsigned id) {
        if (one_ && one_->first == id)
            one_.reset();
        else if (!noOthers())
            others_->end(id);
    }

    void clear() {
        one_.reset();
        others_.reset();
    }

private:
    // An entry is kept when its mark ends, for the next one.
    class Others {
    public:
        Others() = default;
        Others(const Others& other) : table_(other.table_) {}

        bool empty() const { return table_.empty(); }
        const auto& entries() const { return table_; }
        const Value* find(unsigned id) const {
            const auto entry = table_.find(id);
            return entry == table_.end() ? nullptr : &entry->second;
        }
        void begin(unsigned id, const Value& value) {
            if (spare_.empty()) {
                table_.emplace(id, value);
                return;
            }
            spare_.key() = id;
            spare_.mapped() = value;
            table_.insert(std::move(spare_));
        }
        void end(unsigned id) {
            if (auto entry = table_.extract(id)) spare_ = std::move(entry);
        }

    private:
        using Table = std::unordered_map<unsigned, Value>;

        Table table_;
        typename Table::node_type spare_;
    };

    bool noOthers() const { return !others_ || others_->empty(); }

    [[gnu::noinline]] void beginAnother(unsigned id, const Value& value) {
        if (!others_) others_ = std::make_unique<Others>();
        others_->begin(id, value);
    }

    std::optional<std::pair<unsigned, Value>> one_;
    std::unique_ptr<Others> others_;
};

}  // namespace trel::smartcomp
