#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/Export.h"

namespace sdf {

/// The tag of an element. Most are found to be equal by looking at one word and the
/// size, and stand in place.
class TREL_PLATFORM_API Tag {
public:
    /// What a text is looked for by.
    struct Head {
        explicit Head(std::string_view text) : size(static_cast<std::uint32_t>(text.size())) {
            text.copy(reinterpret_cast<char*>(&bytes), sizeof bytes);
        }

        std::uint64_t bytes = 0;  // the first ones
        std::uint32_t size;
    };

    explicit Tag(std::string_view text) : size_(static_cast<std::uint32_t>(text.size())) {
        text.copy(bytes_.data(), isInPlace() ? bytes_.size() : sizeof Head::bytes);
        if (isInPlace()) return;
        auto whole = std::make_unique<char[]>(text.size());
        text.copy(whole.get(), text.size());
        const char* const released = whole.release();
        std::memcpy(&bytes_[sizeof Head::bytes], &released, sizeof released);
    }
    ~Tag() {
        if (!isInPlace()) delete[] whole();
    }
    Tag(const Tag&) = delete;
    Tag& operator=(const Tag&) = delete;

    std::string_view text() const { return {isInPlace() ? bytes_.data() : whole(), size_}; }

    /// Whether this is `text`, whose head is given.
    bool is(const Head& head, std::string_view text) const {
        std::uint64_t first;
        std::memcpy(&first, bytes_.data(), sizeof first);
        return size_ == head.size && first == head.bytes &&
               (size_ <= sizeof first || this->text() == text);
    }

private:
    bool isInPlace() const { return size_ <= bytes_.size(); }
    const char* whole() const {
        const char* text;
        std::memcpy(&text, &bytes_[sizeof Head::bytes], sizeof text);
        return text;
    }

    // Of a longer one the first that a head has, and where all of it stands.
    std::array<char, 16> bytes_{};
    std::uint32_t size_;
};

}  // namespace sdf
