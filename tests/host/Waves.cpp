#include "tests/host/Waves.h"

#include <fmt/format.h>

#include <bitset>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <stdexcept>

namespace trel::test {

namespace {

class Reader {
public:
    Reader(Waves& waves, const std::string& text) : waves_(waves), words_(text) {}

    void read() {
        for (std::string word; words_ >> word;) {
            if (word == "$scope")
                open();
            else if (word == "$upscope")
                close();
            else if (word == "$var")
                variable();
            else if (word == "$timescale")
                waves_.timescale = rest();
            else if (word == "$date" || word == "$version" || word == "$comment" ||
                     word == "$enddefinitions")
                rest();
            else if (word == "$dumpvars" || word == "$end")
                continue;
            else
                value(word);
        }
        if (!scopes_.empty()) throw std::runtime_error("a scope has no end");
    }

private:
    std::string next() {
        std::string word;
        if (!(words_ >> word)) throw std::runtime_error("the dump ends too soon");
        return word;
    }

    // All up to the next $end.
    std::string rest() {
        std::string text;
        for (std::string word = next(); word != "$end"; word = next()) text += word;
        return text;
    }

    void open() {
        next();
        scopes_.push_back(next());
        rest();
    }

    void close() {
        rest();
        if (scopes_.empty()) throw std::runtime_error("a scope ends that has not begun");
        scopes_.pop_back();
    }

    void variable() {
        const std::string kind = next();
        const std::string bits = next();
        const std::string code = next();
        std::string place;
        for (const std::string& scope : scopes_) place += scope + ".";
        place += next();
        rest();
        if (!waves_.kinds.emplace(place, kind + " " + bits).second)
            throw std::runtime_error("two variables are called " + place);
        places_[code] = place;
    }

    void value(const std::string& word) {
        const std::string text = word.substr(1);
        switch (word[0]) {
            case '#': waves_.end = std::stoll(text); break;
            case 'b': set(next(), number(text)); break;
            case 'r': set(next(), real(text)); break;
            case '0':
            case '1':
            case 'x': set(text, word.substr(0, 1)); break;
            default: throw std::runtime_error("no part of a dump: " + word);
        }
    }

    static std::string number(const std::string& bits) {
        if (bits.find('x') != std::string::npos) return "x";
        return std::to_string(static_cast<std::int32_t>(std::bitset<32>(bits).to_ulong()));
    }

    static std::string real(const std::string& text) {
        double number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return fmt::format("{}", number);
    }

    // A writer may tell a value that is there already.
    void set(const std::string& code, const std::string& value) {
        const auto place = places_.find(code);
        if (place == places_.end()) throw std::runtime_error("no variable has the code " + code);
        auto& changes = waves_.changes[place->second];
        if (changes.empty() || changes.back().second != value)
            changes.emplace_back(waves_.end, value);
    }

    Waves& waves_;
    std::istringstream words_;
    std::vector<std::string> scopes_;
    std::map<std::string, std::string> places_;  // by code
};

}  // namespace

Waves::Waves(const std::string& text) { Reader(*this, text).read(); }

}  // namespace trel::test
