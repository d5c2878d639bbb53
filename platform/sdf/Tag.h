#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/Export.h"

namespace sdf {

/// The tag of an element. Most stand in place, and are compared without a call.
class TREL_PLATFORM_API Tag {
public:
    explicit Tag(std::string_view text) : size_(static_cast<std::uint32_t>(text.size())) {
        if (isInPlace()) {
            text.copy(bytes_.data(), bytes_.size());
            return;
        }
        auto whole = std::make_unique<char[]>(text.size());
        text.copy(whole.get(), text.size());
        const char* const released = whole.release();
        std::memcpy(bytes_.data(), &released, sizeof released);
    }
    ~Tag() {
        if (!isInPlace()) delete[] whole();
    }
    Tag(const Tag&) = delete;
    Tag& operator=(const Tag&) = delete;

    std::string_view text() const { return {isInPlace() ? bytes_.data() : whole(), size_}; }

    bool is(std::string_view text) const {
        return isInPlace() ? isShort(text) : this->text() == text;
    }

    /// The same for a tag that stands in place; false for every other one.
    bool isShort(std::string_view text) const {
        if (size_ != text.size() || !isInPlace()) return false;
        const char* const own = bytes_.data();
        if (size_ >= sizeof(std::uint64_t)) return agree<std::uint64_t>(own, text);
        if (size_ >= sizeof(std::uint32_t)) return agree<std::uint32_t>(own, text);
        if (size_ >= sizeof(std::uint16_t)) return agree<std::uint16_t>(own, text);
        return size_ == 0 || *own == text.front();
    }

private:
    bool isInPlace() const { return size_ <= bytes_.size(); }
    const char* whole() const {
        const char* text;
        std::memcpy(&text, bytes_.data(), sizeof text);
        return text;
    }

    // Whether the first words are the same and the last ones, which meet or overlap.
    template <typename Word>
    static bool agree(const char* own, std::string_view text) {
        const std::size_t last = text.size() - sizeof(Word);
        return wordAt<Word>(own) == wordAt<Word>(text.data()) &&
               wordAt<Word>(own + last) == wordAt<Word>(text.data() + last);
    }
    template <typename Word>
    static Word wordAt(const char* place) {
        Word word;
        std::memcpy(&word, place, sizeof word);
        return word;
    }

    std::array<char, 16> bytes_{};  // or where all of it stands
    std::uint32_t size_;
};

}  // namespace sdf
