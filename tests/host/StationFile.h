#pragma once

#include <map>
#include <string>
#include <vector>

namespace trel::test {

/// The text of a station file, put together from components and connections. The
/// station logic has the id 2.
class StationFile {
public:
    struct Signal {
        std::string name;
        std::string type;  // "DigitalInput"
        bool resets = false;
    };
    struct End {
        unsigned component;
        unsigned signal;  // the first has the id 1
    };

    /// A component with these signals, in a parent that was added before.
    void add(unsigned id, const std::string& name, const std::string& type,
             const std::vector<Signal>& signals, unsigned parent = 2, const std::string& more = "");

    /// A gate: "In" is signal 1 and "Out" signal 2, or "In1", "In2" and "Out".
    void gate(unsigned id, const std::string& name, const std::string& type, unsigned inputs = 1,
              unsigned parent = 2);

    /// The next connection in the order of an aggregation.
    void connect(End from, End to, unsigned owner = 2);

    std::string text() const;

private:
    struct Component {
        unsigned id;
        std::string head;
        std::string keys;
        std::string connections;
        unsigned count = 0;  // of connections
    };

    Component& at(unsigned id);

    std::vector<Component> components_ = {{2, "", "", "", 0}};
    std::map<unsigned, std::size_t> places_ = {{2, 0}};  // by id
};

}  // namespace trel::test
