#pragma once

#include <memory>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "smartcomp/Assign.h"

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
        : value_(other.value_),
          id_(other.id_),
          hasOne_(other.hasOne_),
          others_(other.others_ ? new Others(*other.others_) : nullptr) {}
    Marks(Marks&&) = default;
    Marks& operator=(const Marks& other) { return *this = Marks(other); }
    Marks& operator=(Marks&&) = default;

    bool empty() const { return !hasOne_; }

    /// The value that `id` is being set to; null when it is not being set.
    const Value* find(unsigned id) const {
        if (hasOne_ && id_ == id) return &value_;
        return others_ ? others_->find(id) : nullptr;
    }

    /// All of them.
    std::unordered_map<unsigned, Value> entries() const {
        auto all = others_ ? others_->entries() : std::unordered_map<unsigned, Value>();
        if (hasOne_) all.emplace(id_, value_);
        return all;
    }

    /// A mark that is there keeps its value.
    template <typename Given>
    void begin(unsigned id, const Given& value) {
        if (!hasOne_) [[likely]] {
            set(value_, value);
            id_ = id;
            hasOne_ = true;
        } else if (!find(id)) {
            beginAnother(id, value);
        }
    }

    /// Nothing when there is none.
    void end(unsigned id) {
        if (!hasOne_) return;
        if (others_) [[unlikely]]
            endAmongOthers(id);
        else if (id_ == id)
            hasOne_ = false;
    }

    void clear() {
        hasOne_ = false;
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
        // Ends any of them, and gives what it was; there is one.
        void endAny(unsigned& id, Value& value) {
            spare_ = table_.extract(table_.begin());
            id = spare_.key();
            std::swap(value, spare_.mapped());
        }

    private:
        using Table = std::unordered_map<unsigned, Value>;

        Table table_;
        typename Table::node_type spare_;
    };

    [[gnu::noinline]] void beginAnother(unsigned id, const Value& value) {
        if (!others_) others_ = std::make_unique<Others>();
        others_->begin(id, value);
    }

    [[gnu::noinline]] void endAmongOthers(unsigned id) {
        if (id_ != id)
            others_->end(id);
        else if (others_->empty())
            hasOne_ = false;
        else
            others_->endAny(id_, value_);
    }

    // A number is made where it stands: what is written in parts and read as a whole keeps
    // the processor waiting. A text takes the place of the one before.
    template <typename Given>
    static void set(Value& to, const Given& from) {
        if constexpr (std::is_trivially_destructible_v<Value>)
            std::construct_at(&to, from);
        else
            assign(to, from);
    }

    Value value_{};  // of the one; stays for the next when its mark ends
    unsigned id_ = 0;
    bool hasOne_ = false;  // as long as there are others, too
    std::unique_ptr<Others> others_;
};

}  // namespace trel::smartcomp
