#include "host/Waveforms.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>
#include <variant>

#include "host/Markup.h"
#include "host/Members.h"
#include "host/Numbers.h"
#include "host/Tree.h"

namespace trel::host {

namespace {

constexpr Time open = std::numeric_limits<Time>::max();

double numberOf(const SignalValue& value) {
    return std::visit([](auto number) { return static_cast<double>(number); }, value);
}

}  // namespace

Waveforms::Waveforms(Watch watch) : watch_(std::move(watch)) {
    for (const unsigned object : Tree().all())
        for (const Member& member : membersOf(object)) {
            std::string name = pathOf(member);
            if (watch_.isAll() ? member.kind != Member::Kind::Signal : !watch_.suits(name))
                continue;
            const auto value = signalValueOf(member);
            const Form form = !value ? Form::Text : isDigital(member) ? Form::Wire : Form::Number;
            places_.emplace(member, rows_.size());
            rows_.push_back({member,
                             std::move(name),
                             form,
                             {{0, value ? numberOf(*value) : 0, value ? "" : shown(member)}},
                             {}});
        }
}

Waveforms::Row* Waveforms::rowOf(const Member& member) {
    const auto place = places_.find(member);
    return place == places_.end() ? nullptr : &rows_[place->second];
}

void Waveforms::changed(const Change& change) {
    Row* const row = rowOf(change.member);
    if (!row) return;
    if (++changes_ > mostChanges) {
        ++lost_;
        return;
    }
    if (row->form == Form::Text)
        row->points.push_back({change.time, 0, change.shown});
    else if (change.number)
        row->points.push_back({change.time, numberOf(*change.number), {}});
}

void Waveforms::forced(Time time, const Member& signal, bool on) {
    Row* const row = rowOf(signal);
    if (!row) return;
    if (on)
        row->forced.push_back({time, open});
    else if (!row->forced.empty())
        row->forced.back().to = time;
}

// Draws one row below the other.
class Waveforms::Canvas {
public:
    explicit Canvas(Time end) : end_(std::max<Time>(end, 1)) {}

    void add(const Row& row) {
        const int bottom = top_ + height;
        print("<g><title>{0}</title><text class=\"name\" x=\"{1}\" y=\"{2}\">{0}</text>",
              escapedMarkup(row.name), left - 12, bottom - 4);
        for (const Span& span : row.forced)
            print("<rect class=\"forced\" x=\"{:.1f}\" y=\"{}\" width=\"{:.1f}\" height=\"{}\" />",
                  x(span.from), top_, x(std::min(span.to, end_)) - x(span.from), height);
        if (row.form == Form::Text)
            texts(row);
        else
            curve(row);
        print("</g>\n");
        top_ = bottom + gap;
    }

    std::string finished() const {
        const int bottom = top_ + 24;
        std::string axis;
        for (int tick = 0; tick <= ticks; ++tick) {
            const Time time = end_ / ticks * tick + end_ % ticks * tick / ticks;
            axis += fmt::format("<line class=\"grid\" x1=\"{0:.1f}\" x2=\"{0:.1f}\" y1=\"0\" "
                                "y2=\"{1}\" /><text class=\"time\" x=\"{0:.1f}\" y=\"{2}\">{3}"
                                "</text>",
                                x(time), top_, top_ + 16, textOfTime(time));
        }
        return fmt::format("<svg class=\"waves\" viewBox=\"0 0 {} {}\" width=\"{}\" height=\"{}\" "
                           "role=\"img\" aria-label=\"Values over time\">\n{}\n{}</svg>\n",
                           left + width + right, bottom, left + width + right, bottom, axis, text_);
    }

private:
    static constexpr int left = 260;
    static constexpr int width = 900;
    static constexpr int right = 40;
    static constexpr int height = 18;
    static constexpr int gap = 8;
    static constexpr int ticks = 10;

    template <typename... Parts>
    void print(fmt::format_string<Parts...> form, Parts&&... parts) {
        fmt::format_to(std::back_inserter(text_), form, std::forward<Parts>(parts)...);
    }

    double x(Time time) const {
        return left + width * (static_cast<double>(time) / static_cast<double>(end_));
    }

    // From point to point in steps, a vertical line for all that lies in one pixel.
    void curve(const Row& row) {
        double least = row.form == Form::Wire ? 0 : row.points.front().number;
        double most = row.form == Form::Wire ? 1 : least;
        for (const Point& point : row.points) {
            least = std::min(least, point.number);
            most = std::max(most, point.number);
        }
        const double scale = most > least ? (height - 2) / (most - least) : 0;
        const auto y = [&](double number) { return top_ + height - 1 - (number - least) * scale; };

        print("<path class=\"{}\" d=\"M{:.1f} {:.1f}", row.form == Form::Wire ? "wire" : "number",
              x(0), y(row.points.front().number));
        for (std::size_t i = 1; i < row.points.size();) {
            const double at = x(row.points[i].time);
            double low = row.points[i - 1].number;
            double high = low;
            for (; i < row.points.size() && x(row.points[i].time) < at + 1; ++i) {
                low = std::min(low, row.points[i].number);
                high = std::max(high, row.points[i].number);
            }
            print("H{:.1f}V{:.1f}V{:.1f}V{:.1f}", at, y(low), y(high), y(row.points[i - 1].number));
        }
        print("H{:.1f}\" />", x(end_));
        if (row.form == Form::Number)
            print("<text class=\"range\" x=\"{0:.1f}\" y=\"{1}\">{2:g}</text><text class=\"range\" "
                  "x=\"{0:.1f}\" y=\"{3}\">{4:g}</text>",
                  x(end_) + 4, top_ + 7, most, top_ + height, least);
    }

    // A box for each text, with the text where there is room.
    void texts(const Row& row) {
        for (std::size_t i = 0; i < row.points.size(); ++i) {
            const double from = x(row.points[i].time);
            const double to = x(i + 1 < row.points.size() ? row.points[i + 1].time : end_);
            const std::string shown = escapedMarkup(row.points[i].shown);
            if (to - from < 1) continue;
            print(
                "<rect class=\"text\" x=\"{:.1f}\" y=\"{}\" width=\"{:.1f}\" height=\"{}\"><title>"
                "{}</title></rect>",
                from, top_, to - from, height, shown);
            if (to - from > 7.0 * static_cast<double>(row.points[i].shown.size()))
                print("<text class=\"value\" x=\"{:.1f}\" y=\"{}\">{}</text>", from + 4,
                      top_ + height - 5, shown);
        }
    }

    const Time end_;
    int top_ = 4;
    std::string text_;
};

std::vector<const Waveforms::Row*> Waveforms::shownRows() const {
    std::vector<const Row*> rows;
    for (const Row& row : rows_)
        if (!watch_.isAll() || row.points.size() > 1) rows.push_back(&row);
    return rows;
}

std::string Waveforms::drawn(Time end) const {
    auto rows = shownRows();
    if (rows.size() > mostRows) rows.resize(mostRows);
    Canvas canvas(end);
    for (const Row* const row : rows) canvas.add(*row);
    return canvas.finished();
}

std::string Waveforms::leftOut() const {
    std::string text;
    if (const std::size_t rows = shownRows().size(); rows > mostRows)
        text +=
            fmt::format("Only {} of {} members are drawn; name those you look for with --watch. ",
                        mostRows, rows);
    if (lost_ > 0)
        text += fmt::format("The last {} changes are not drawn; watch less with --watch.", lost_);
    return text;
}

}  // namespace trel::host
