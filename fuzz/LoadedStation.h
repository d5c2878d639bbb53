#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Controller.h"

namespace fuzz {

/// The station of a text with everything that lives in it, as far as it can be
/// made: where a component cannot, those behind it are not made either.
class LoadedStation {
public:
    /// \throws sdf::DocumentError for a text that is no station, and what the
    /// station logic throws.
    explicit LoadedStation(std::string_view text);

    /// Whether everything in the document was made, and nothing was lost on the
    /// way that is promised to be lost.
    bool isWhole() const { return whole_; }

    /// What differs between the live objects and the document; empty for nothing.
    static std::string faults();

    /// Everything that a component keeps beside its element, for comparing.
    static std::string state();

private:
    static bool lostRecords();
    void makeControllers();

    bool whole_ = true;
    std::vector<std::unique_ptr<trel::host::Controller>> controllers_;
};

}  // namespace fuzz
