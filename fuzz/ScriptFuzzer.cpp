#include <cstddef>
#include <cstdint>

#include "fuzz/Rebirth.h"
#include "fuzz/Require.h"
#include "tests/network/Station.h"

// Bytes are a station and a script of edits and settings, carried out in the
// library and in the model. See network::TwinStation for what they decide.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr unsigned mostSteps = 300;

    fuzz::beginStation();
    network::Random random(std::span(data, size));
    network::Model model;
    network::Script edits(random);
    edits.calm = 1 + random.below(8);
    const bool editsInDelivery = !random.oneIn(4);
    const bool takesApart = random.oneIn(4);
    network::TwinStation station(random, model, editsInDelivery ? &edits : nullptr);
    for (unsigned step = 0; step != mostSteps && random.hasBytes(); ++step)
        fuzz::requireNone(station.act());
    if (takesApart) fuzz::requireNone(station.takeApart());
    return 0;
}
