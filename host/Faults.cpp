#include "host/Faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace trel::host {

// Nesting is limited.
void FaultList::allow(const sdf::Element& root) {
    using Kind = sdf::Element::Kind;
    std::string comments;
    for (const auto* node = root.firstChild(); node; node = node->nextSibling()) {
        if (node->kind() == Kind::Comment) {
            comments += node->getStringFromValue() + '\n';
        } else if (node->kind() == Kind::Element) {
            if (comments.find("allow ") != std::string::npos) allowed_.emplace(node, comments);
            comments.clear();
            allow(*node);
        }
    }
}

// The code is a word of its own behind "allow".
bool FaultList::isAllowed(FaultCode code, const sdf::Element& at) const {
    const auto entry = allowed_.find(&at);
    if (entry == allowed_.end() || code->severity == Severity::Error) return false;
    const std::string wanted = fmt::format("allow {}", code->code);
    for (auto from = entry->second.find(wanted); from != std::string::npos;
         from = entry->second.find(wanted, from + 1)) {
        const std::size_t end = from + wanted.size();
        const char next = end < entry->second.size() ? entry->second[end] : ' ';
        if (next != '-' && !(next >= 'a' && next <= 'z')) return true;
    }
    return false;
}

void FaultList::add(FaultCode code, const sdf::Element& at, std::string path, std::string text,
                    std::string remedy) {
    if (isNoted(at) || isAllowed(code, at)) return;
    if (remedy.empty()) remedy = code->remedy;
    faults_.push_back({code, at.place(), std::move(path), std::move(text), std::move(remedy)});
}

void FaultList::addAndNote(FaultCode code, const sdf::Element& at, std::string path,
                           std::string text, std::string remedy) {
    add(code, at, std::move(path), std::move(text), std::move(remedy));
    noted_.insert(&at);
}

Faults errorsIn(const Faults& faults) {
    Faults errors;
    std::ranges::copy_if(faults, std::back_inserter(errors), &Fault::isError);
    return errors;
}

Faults joined(Faults first, const Faults& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

void sortByPlace(Faults& faults) {
    const auto place = [](const Fault& fault) {
        return std::tie(fault.place.line, fault.place.column);
    };
    std::ranges::sort(faults, [&](const Fault& a, const Fault& b) {
        if (place(a) != place(b)) return place(a) < place(b);
        return std::pair(a.code.index(), a.text) < std::pair(b.code.index(), b.text);
    });
}

std::string_view nameOf(Severity severity) {
    return severity == Severity::Error ? "error" : "warning";
}

std::string textOf(const std::string& file, const Fault& fault) {
    std::string text = file;
    if (fault.place.line != 0) text += fmt::format(":{}:{}", fault.place.line, fault.place.column);
    text += fmt::format(": {}: ", nameOf(fault.code->severity));
    if (!fault.path.empty()) text += fault.path + ": ";
    return text + fmt::format("{}; {} [{}]", fault.text, fault.remedy, fault.code->code);
}

std::string textOfFaults(const std::string& file, Faults faults) {
    sortByPlace(faults);
    std::string text;
    for (const Fault& fault : faults) {
        if (!text.empty()) text += '\n';
        text += textOf(file, fault);
    }
    return text;
}

}  // namespace trel::host
