#include "host/Graph.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "host/Markup.h"
#include "host/Members.h"
#include "host/Names.h"
#include "host/Objects.h"
#include "host/Tree.h"
#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::Aggregation;
using smartcomp::Connection;

constexpr std::size_t readable = 150;  // components in one picture
constexpr unsigned deepest = 32;       // frames in frames

Aggregation* aggregationOf(unsigned id) { return dynamic_cast<Aggregation*>(objectOf(id)); }

class Drawing {
public:
    explicit Drawing(const GraphView& view) : view_(view) {
        for (const auto* const component : componentsNow())
            if (const auto* const owner = dynamic_cast<const Aggregation*>(component))
                for (const auto& [id, binding] : owner->bindings()) {
                    bound_.insert(endOf(binding->source(), Member::Kind::Property));
                    bound_.insert(endOf(binding->destination(), Member::Kind::Property));
                    if (binding->getDstComponentId() == owner->id())
                        drivenInside_.insert(endOf(binding->destination(), Member::Kind::Property));
                }
        depth_ = std::min(view.depth.value_or(readableDepth()), deepest);
    }

    std::string draw() {
        line(0, "digraph station {{");
        line(1, "label=\"{}\"; labelloc=t; fontname=\"sans-serif\"; rankdir=LR; ranksep=0.6;",
             quotedText(GetStationElem()->name()));
        line(1, "node [shape=plain, fontname=\"sans-serif\", fontsize=11];");
        line(1, "edge [fontname=\"sans-serif\", fontsize=9, arrowsize=0.7];");
        ports(tree_.root(), 1);
        inside(tree_.root(), 0);
        line(0, "}}");
        return std::move(text_);
    }

private:
    template <typename... Parts>
    void line(unsigned depth, fmt::format_string<Parts...> form, Parts&&... parts) {
        text_.append(2 * std::size_t{depth}, ' ');
        fmt::format_to(std::back_inserter(text_), form, std::forward<Parts>(parts)...);
        text_ += '\n';
    }

    // Within quotes of the DOT language.
    static std::string quotedText(const std::string& text) {
        std::string result;
        for (const char c : text) {
            if (c == '"' || c == '\\') result += '\\';
            result += c == '\n' ? ' ' : c;
        }
        return result;
    }

    static Member endOf(Connection::End end, Member::Kind kind) {
        return {Connection::componentOf(end), kind, Connection::memberOf(end)};
    }

    // The largest depth at which the picture has few enough components, 1 at least.
    unsigned readableDepth() const {
        std::vector<unsigned> level = {tree_.root()};
        std::size_t shown = 0;
        for (unsigned depth = 0; !level.empty(); ++depth) {
            std::vector<unsigned> next;
            for (const unsigned id : level) {
                const auto children = tree_.children(id);
                next.insert(next.end(), children.begin(), children.end());
            }
            shown += next.size();
            if (shown > readable) return std::max(depth, 1u);
            level = std::move(next);
        }
        return deepest;
    }

    // What an open aggregation contains, and how that is wired. `depth` is its own.
    void inside(unsigned id, unsigned depth) {
        for (const unsigned child : tree_.children(id)) {
            if (!isOpenAt(child, depth + 1)) {
                node(child, depth + 1);
                continue;
            }
            open_.insert(child);
            line(depth + 1, "subgraph cluster_{} {{", child);
            line(depth + 2,
                 "label=\"{}\"; style=rounded; color=\"#7a8aa0\"; "
                 "bgcolor=\"#0000000a\";",
                 quotedText(objectOf(child)->name()));
            ports(child, depth + 2);
            inside(child, depth + 1);
            line(depth + 1, "}}");
        }
        columns(id, depth + 1);
        if (const Aggregation* const owner = aggregationOf(id)) edges(*owner, depth + 1);
    }

    bool isOpenAt(unsigned id, unsigned depth) const {
        return depth < depth_ && aggregationOf(id) && !tree_.children(id).empty();
    }

    // Its own signals and properties stand at the edges of the frame.
    void ports(unsigned id, unsigned depth) {
        std::vector<Member> in;
        std::vector<Member> out;
        for (const Member& member : shownMembers(id))
            (isOutput(member) ? out : in).push_back(member);
        for (const auto& [members, place] : {std::pair(&in, "i"), std::pair(&out, "o")}) {
            if (members->empty()) continue;
            line(depth, "c{}{} [label=<{}>];", id, place, table("", "", *members, {}));
        }
    }

    void node(unsigned id, unsigned depth) {
        std::vector<Member> in;
        std::vector<Member> out;
        for (const Member& member : shownMembers(id))
            (isOutput(member) ? out : in).push_back(member);
        const auto* const object = objectOf(id);
        std::string type = object->element()->tag() == "controller"
                               ? "controller"
                               : object->element()->asString("type");
        if (const std::size_t count = countInside(id); count != 0)
            type += fmt::format(", {} inside", count);
        std::string position;
        if (const auto xy = positionOf(id))
            position = fmt::format(", pos=\"{},{}!\"", xy->first, -xy->second);
        line(depth, "c{} [label=<{}>{}];", id, table(object->name(), type, in, out), position);
    }

    bool isFrame(unsigned id) const { return open_.contains(id) || id == tree_.root(); }

    std::size_t countInside(unsigned id) const {
        std::size_t count = 0;
        std::vector<unsigned> waiting = tree_.children(id);
        while (!waiting.empty()) {
            ++count;
            const auto children = tree_.children(waiting.back());
            waiting.pop_back();
            waiting.insert(waiting.end(), children.begin(), children.end());
        }
        return count;
    }

    bool isOutput(const Member& member) const {
        if (member.kind == Member::Kind::Property)
            return isFrame(member.object) && drivenInside_.contains(member);
        if (auto* const signal = signalOf(member)) return signal->isOutput();
        const auto* const signal = controllerSignalOf(member);
        return signal && signal->isOutput();
    }

    // All signals; of the properties those that are bound, or whose values are shown.
    std::vector<Member> shownMembers(unsigned id) const {
        auto members = membersOf(id);
        std::erase_if(members, [&](const Member& member) {
            if (member.kind == Member::Kind::Signal || bound_.contains(member)) return false;
            return !view_.values || !propertyOf(member)->isVisible();
        });
        return members;
    }

    std::string table(const std::string& name, const std::string& type,
                      const std::vector<Member>& in, const std::vector<Member>& out) const {
        std::string text =
            "<TABLE BORDER=\"0\" CELLBORDER=\"1\" CELLSPACING=\"0\" COLOR=\"#7a8aa0\" "
            "BGCOLOR=\"white\">";
        const bool two = !in.empty() && !out.empty();
        if (!type.empty())
            text += fmt::format("<TR><TD COLSPAN=\"{}\" BGCOLOR=\"#dfe7f2\"><B>{}</B><BR/><FONT "
                                "POINT-SIZE=\"8\">{}</FONT></TD></TR>",
                                two ? 2 : 1, name.empty() ? " " : escapedMarkup(name),
                                escapedMarkup(type));
        for (std::size_t row = 0; row < std::max(in.size(), out.size()); ++row) {
            text += "<TR>";
            if (!in.empty()) text += row < in.size() ? cell(in[row]) : "<TD></TD>";
            if (!out.empty()) text += row < out.size() ? cell(out[row]) : "<TD></TD>";
            text += "</TR>";
        }
        return text + "</TABLE>";
    }

    std::string cell(const Member& member) const {
        const bool isSignal = member.kind == Member::Kind::Signal;
        std::string text = nameOf(member).value_or("");
        if (view_.values) text += " = " + shown(member);
        return fmt::format("<TD PORT=\"{}\" ALIGN=\"{}\"{}>{}</TD>", portOf(member),
                           isOutput(member) ? "RIGHT" : "LEFT",
                           isSignal ? "" : " BGCOLOR=\"#f3efe4\"",
                           text.empty() ? " " : escapedMarkup(text));
    }

    static std::string portOf(const Member& member) {
        return fmt::format("{}{}", member.kind == Member::Kind::Signal ? 's' : 'p', member.id);
    }

    std::optional<std::pair<int, int>> positionOf(unsigned id) const {
        const auto* const component = componentOf(id);
        const auto* const parent =
            aggregationOf(component ? component->getObjParentId() : tree_.root());
        return parent ? parent->getChildXY(id) : std::nullopt;
    }

    // Children that the document's diagram has to the right stand further to the right.
    void columns(unsigned id, unsigned depth) {
        std::map<int, std::string> byX;  // a node of the first in each column
        for (const unsigned child : tree_.children(id))
            if (const auto xy = positionOf(child))
                if (const std::string node = nodeOf(child); !node.empty())
                    byX.emplace(xy->first, node);
        const std::string* left = nullptr;
        for (const auto& [x, node] : byX) {
            if (left) line(depth, "{} -> {} [style=invis];", *left, node);
            left = &node;
        }
    }

    // One that stands for the whole; empty for a frame without ports.
    std::string nodeOf(unsigned id) const {
        if (!isFrame(id)) return fmt::format("c{}", id);
        const auto members = shownMembers(id);
        if (members.empty()) return "";
        return fmt::format("c{}{}", id, isOutput(members.front()) ? "o" : "i");
    }

    void edges(const Aggregation& owner, unsigned depth) {
        std::map<unsigned, const Connection*> ordered;  // by index
        for (const auto& [id, connection] : owner.connections())
            ordered.emplace(connection->getIndex(), connection);
        for (const auto& [index, connection] : ordered)
            edge(*connection, Member::Kind::Signal, fmt::format("label=\"{}\"", index), depth);
        std::map<unsigned, const Connection*> bindings;  // by id
        for (const auto& [id, binding] : owner.bindings()) bindings.emplace(id, binding);
        for (const auto& [id, binding] : bindings)
            edge(*binding, Member::Kind::Property, "style=dashed, color=\"#8a7a4a\"", depth);
    }

    void edge(const Connection& connection, Member::Kind kind, const std::string& look,
              unsigned depth) {
        const Member from = endOf(connection.source(), kind);
        const Member to = endOf(connection.destination(), kind);
        if (nameOf(from) && nameOf(to))
            line(depth, "{} -> {} [{}];", placeOf(from), placeOf(to), look);
    }

    std::string placeOf(const Member& member) const {
        const char* const side = !isFrame(member.object) ? "" : isOutput(member) ? "o" : "i";
        return fmt::format("c{}{}:{}", member.object, side, portOf(member));
    }

    const GraphView view_;
    const Tree tree_;
    unsigned depth_ = 0;
    std::set<Member> bound_;
    std::set<Member> drivenInside_;  // properties of aggregations, by what they contain
    std::set<unsigned> open_;        // aggregations
    std::string text_;
};

}  // namespace

std::string dotOfStation(const GraphView& view) { return Drawing(view).draw(); }

}  // namespace trel::host
