#include "host/ManPage.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cctype>
#include <string_view>
#include <utility>

namespace trel::host {

namespace {

// A text that the formatter fills; a hyphen stays one that can be copied.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\(rs";
        else if (c == '-')
            result += "\\-";
        else
            result += c == '\n' ? ' ' : c;
    }
    return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

// What stands before the mark, and behind it.
std::pair<std::string_view, std::string_view> parted(std::string_view text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    if (at == text.npos) return {text, {}};
    const std::string_view before = text.substr(0, at);
    return {before.substr(0, before.find_last_not_of(" \n") + 1), text.substr(at + mark.size())};
}

class Writer {
public:
    explicit Writer(const CLI::App& app) : app_(app) {}

    std::string page(const std::string& version) {
        const std::string description = app_.get_description();
        const auto [what, codes] = parted(description, "Exit codes: ");
        std::string name(what.substr(0, what.find('.')));
        name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
        line(".TH {} 1 \"\" \"smartcomp {}\"", app_.get_name(), version);
        line(".SH NAME\n{} \\- {}", app_.get_name(), escaped(name));
        line(".SH SYNOPSIS");
        for (const CLI::App* const command : app_.get_subcommands({})) usage(*command);
        line(".SH COMMANDS");
        for (const CLI::App* const command : app_.get_subcommands({})) describe(*command);
        line(".SH EXIT STATUS\n{}", escaped(codes));
        return std::move(text_);
    }

private:
    template <typename... Arguments>
    void line(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
        text_ += fmt::format(format, std::forward<Arguments>(arguments)...) + '\n';
    }

    void usage(const CLI::App& command) {
        const std::string full = app_.get_name() + ' ' + command.get_name();
        const std::string text = formatter_.make_usage(&command, full);
        const auto rest = text.substr(text.find(full) + full.size());
        line(".B {}\n{}\n.br", full, escaped(rest.substr(0, rest.find('\n'))).substr(1));
    }

    void describe(const CLI::App& command) {
        const std::string description = command.get_description();
        const auto [what, example] = parted(description, "Example: ");
        line(".SS {}\n{}", command.get_name(), escaped(what));
        for (const bool positional : {true, false})
            for (const CLI::Option* const option : command.get_options())
                if (option->get_positional() == positional && !option->get_group().empty())
                    line(".TP\n\\fB{}\\fR{}\n{}",
                         escaped(formatter_.make_option_name(option, positional)),
                         escaped(formatter_.make_option_opts(option)),
                         escaped(option->get_description()));
        line(".PP\nExample:\n.B {}", escaped(example));
    }

    const CLI::App& app_;
    const CLI::Formatter formatter_;
    std::string text_;
};

}  // namespace

std::string manPage(const CLI::App& app, const std::string& version) {
    return Writer(app).page(version);
}

}  // namespace trel::host
