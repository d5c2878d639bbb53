#pragma once

#include <memory>
#include <sstream>
#include <string>

#include "host/LiveStation.h"
#include "tests/host/Program.h"

namespace trel::test {

/// A small station that lives in the test's own process: two buffers called
/// "A", one in the group "Cell" and one beside it, a conveyor, and a controller.
///
///     Robot.Go  -> Cell.In      first
///     Robot.Go  -> A.In         second
///     Robot.Go  -> Other.Told   third, another controller
///     Cell.In   -> Cell/A.In
///     Robot.Tap -> A.In         fourth, a pulse
class LiveCell : public FolderTest {
protected:
    void SetUp() override;
    void TearDown() override;

    host::Controller& robot() const { return *station_->controllers().at(0); }
    host::Controller& other() const { return *station_->controllers().at(1); }

    static constexpr unsigned cell = 10;
    static constexpr unsigned inner = 11;
    static constexpr unsigned outer = 12;
    static constexpr unsigned belt = 13;

    /// Initialises and starts the components.
    static void start();

private:
    std::unique_ptr<host::LiveStation> station_;
};

}  // namespace trel::test
