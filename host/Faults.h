#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/FaultKinds.h"
#include "platform/sdf/Element.h"

namespace trel::host {

/// What is wrong with a station file, and where.
struct Fault {
    FaultCode code;
    sdf::Element::Place place;
    std::string path;    // of names, of what is wrong; empty where there is none
    std::string text;    // what is wrong
    std::string remedy;  // what to do

    bool isError() const { return code->severity == Severity::Error; }
};
using Faults = std::vector<Fault>;

/// Elements of which a fault is known already: others that it brings along are
/// not told.
using NotedElements = std::unordered_set<const sdf::Element*>;

/// Collects faults. A warning is left out where a comment before the element
/// allows it, as in "allow loop: the axis takes its time".
class FaultList {
public:
    explicit FaultList(NotedElements noted = {}) : noted_(std::move(noted)) {}

    /// Takes in what the comments of a document allow.
    void allow(const sdf::Element& root);

    /// A fault at an element; the remedy is that of its kind if none is given.
    void add(FaultCode code, const sdf::Element& at, std::string path, std::string text,
             std::string remedy = {});

    /// The same, after which the element is noted.
    void addAndNote(FaultCode code, const sdf::Element& at, std::string path, std::string text,
                    std::string remedy = {});

    void note(const sdf::Element& element) { noted_.insert(&element); }
    bool isAllowed(FaultCode code, const sdf::Element& at) const;
    bool isNoted(const sdf::Element& element) const { return noted_.contains(&element); }
    const NotedElements& noted() const { return noted_; }
    Faults take() { return std::move(faults_); }

private:
    Faults faults_;
    NotedElements noted_;
    std::unordered_map<const sdf::Element*, std::string> allowed_;  // the comments
};

/// Those that keep a station from being loaded.
Faults errorsIn(const Faults& faults);

/// All of two.
Faults joined(Faults first, const Faults& second);

/// In the order of the file.
void sortByPlace(Faults& faults);

/// "FILE:LINE:COLUMN: error: PATH: what is wrong; what to do [code]".
std::string textOf(const std::string& file, const Fault& fault);

/// A line for each fault, in the order of the file.
std::string textOfFaults(const std::string& file, Faults faults);

/// How messages call a severity: "error", "warning".
std::string_view nameOf(Severity severity);

}  // namespace trel::host
