#include "platform/sdf/Element.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>

#include "platform/sdf/ValueText.h"

namespace sdf {

namespace {

using Vec3 = trel::rob::Vec3Template<double>;
using Pose = trel::rob::PoseTemplate<double>;

std::vector<ValueObserver*>& observers() {
    static auto* const all = new std::vector<ValueObserver*>;  // outlives every object
    return *all;
}

std::string shortest(double number) {
    std::array<char, 64> buffer;
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

[[noreturn]] void refuse(std::string_view type, std::string_view text) {
    throw std::invalid_argument("\"" + std::string(text) + "\" is no " + std::string(type));
}

// A stream reads no number that is none, and no infinite one.
std::istream& read(std::istream& stream, double& number) {
    static const std::array<std::pair<std::string_view, double>, 4> others = {
        {{"nan", std::numeric_limits<double>::quiet_NaN()},
         {"-nan", std::numeric_limits<double>::quiet_NaN()},
         {"inf", std::numeric_limits<double>::infinity()},
         {"-inf", -std::numeric_limits<double>::infinity()}}};
    std::string word;
    stream >> word;
    for (const auto& [name, value] : others)
        if (name == word) {
            number = value;
            return stream;
        }
    std::istringstream one(word);
    one.imbue(std::locale::classic());
    if (!(one >> number) || !one.eof()) stream.setstate(std::ios::failbit);
    return stream;
}

template <std::size_t n>
std::array<double, n> numbers(std::string_view type, std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    std::array<double, n> all{};
    for (double& number : all)
        if (!read(stream, number)) refuse(type, text);
    if (!(stream >> std::ws).eof()) refuse(type, text);
    return all;
}

template <typename Number>
Number whole(std::string_view type, std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) refuse(type, text);
    return number;
}

bool truth(std::string_view text) {
    if (text == "1" || text == "true") return true;
    if (text == "0" || text == "false") return false;
    refuse("bool", text);
}

template <typename Number>
Number cut(double number, std::string_view text) {
    if (!(number > static_cast<double>(std::numeric_limits<Number>::min()) - 1 &&
          number < static_cast<double>(std::numeric_limits<Number>::max()) + 1))
        refuse("number of that size", text);
    return static_cast<Number>(number);
}

}  // namespace

const std::string& Attr::Type(const std::type_info& type) {
    static const std::array<std::pair<const std::type_info*, std::string>, 8> types = {
        {{&typeid(std::string), "string"},
         {&typeid(bool), "bool"},
         {&typeid(int), "int"},
         {&typeid(unsigned), "uint"},
         {&typeid(unsigned long long), "uint64"},
         {&typeid(double), "double"},
         {&typeid(Vec3), "vec3"},
         {&typeid(Pose), "pose"}}};
    for (const auto& [known, name] : types)
        if (*known == type) return name;
    throw std::invalid_argument("the document holds no such value");
}

namespace valuetext {

std::string render(const std::any& value) {
    if (!value.has_value()) return "";
    if (const auto* text = std::any_cast<std::string>(&value)) return *text;
    if (const auto* is = std::any_cast<bool>(&value)) return *is ? "1" : "0";
    if (const auto* number = std::any_cast<int>(&value)) return std::to_string(*number);
    if (const auto* number = std::any_cast<unsigned>(&value)) return std::to_string(*number);
    if (const auto* number = std::any_cast<unsigned long long>(&value))
        return std::to_string(*number);
    if (const auto* number = std::any_cast<double>(&value)) return shortest(*number);
    const auto three = [](const Vec3& v) {
        return shortest(v.x) + " " + shortest(v.y) + " " + shortest(v.z);
    };
    if (const auto* v = std::any_cast<Vec3>(&value)) return three(*v);
    const Pose pose = std::any_cast<Pose>(value);
    const auto& turn = pose.rotation;
    return three(pose.position) + " " + shortest(turn.w) + " " + three({turn.x, turn.y, turn.z});
}

std::any parse(std::string_view type, std::string_view text) {
    if (type == "string") return std::string(text);
    if (type == "bool") return truth(text);
    if (type == "int") return whole<int>(type, text);
    if (type == "uint") return whole<unsigned>(type, text);
    if (type == "uint64") return whole<unsigned long long>(type, text);
    if (type == "double") return numbers<1>(type, text)[0];
    if (type == "vec3") {
        const auto [x, y, z] = numbers<3>(type, text);
        return Vec3{x, y, z};
    }
    const auto [x, y, z, w, i, j, k] = numbers<7>(type, text);
    return Pose{{x, y, z}, {w, i, j, k}};
}

}  // namespace valuetext

std::shared_ptr<Element> Element::Create(std::string_view tag) {
    return std::make_shared<Element>(Key{}, tag);
}

std::shared_ptr<Element> Element::parent() const { return parent_.lock(); }

unsigned Element::getId(bool orZero) const {
    if (id_ == 0 && !orZero) throw std::logic_error(tag_ + " has no id");
    return id_;
}

std::shared_ptr<Element> Element::setId(unsigned id) {
    id_ = id;
    return shared_from_this();
}

Element* Element::child(std::string_view name) const {
    const auto found = std::ranges::find(children_, name, &Element::tag);
    return found == children_.end() ? nullptr : found->get();
}

// A child "value" holds the value of its parent.
const Element& Element::holder() const {
    const Element* const key = child("value");
    return key ? *key : *this;
}

const Element* Element::keyed(std::string_view name) const {
    return name.empty() || name == "value" ? &holder() : child(name);
}

std::shared_ptr<Element> Element::touch(std::string_view name) {
    if (const auto found = get(name)) return found;
    const auto made = append(name);
    if (name == "value") {
        std::swap(made->type_, type_);
        std::swap(made->text_, text_);
    }
    return made;
}

std::shared_ptr<Element> Element::get(std::string_view name) {
    if (name.empty()) return shared_from_this();
    Element* const found = child(name);
    return found ? found->shared_from_this() : nullptr;
}

std::vector<std::shared_ptr<Element>> Element::children(std::string_view name) const {
    std::vector<std::shared_ptr<Element>> found;
    std::ranges::copy_if(children_, std::back_inserter(found),
                         [&](const auto& one) { return one->tag_ == name; });
    return found;
}

std::shared_ptr<Element> Element::append(std::string_view tag) { return append(Create(tag)); }

std::shared_ptr<Element> Element::append(std::shared_ptr<Element> child) {
    child->removeFromParent();
    children_.push_back(child);
    child->parent_ = weak_from_this();
    return child;
}

std::shared_ptr<Element> Element::appendObject(std::string_view tag, unsigned id,
                                               std::string_view name) {
    const auto made = append(tag);
    made->setName(std::string(name));
    return made->setId(id);
}

// Among the children of its tag.
void Element::moveTo(std::size_t place, const Element& child) {
    const auto alike = children(child.tag_);
    const auto self = std::ranges::find(children_, &child, &std::shared_ptr<Element>::get);
    const auto taken = *self;
    children_.erase(self);
    auto behind = children_.end();
    std::size_t passed = 0;
    for (auto at = children_.begin(); at != children_.end(); ++at)
        if ((*at)->tag_ == child.tag_ && passed++ == place) behind = std::min(behind, at);
    children_.insert(behind, taken);
}

void Element::removeFromParent() {
    const auto owner = parent_.lock();
    if (!owner) return;
    const auto self = shared_from_this();
    std::erase(owner->children_, self);
    parent_.reset();
}

double Element::number(std::string_view name) const {
    const Element* const key = keyed(name);
    if (!key || key->text_.empty()) return 0;
    return numbers<1>("number", key->text_)[0];
}

int Element::asInt(std::string_view name) const { return cut<int>(number(name), asString(name)); }

unsigned Element::asUInt(std::string_view name) const {
    return cut<unsigned>(number(name), asString(name));
}

unsigned long long Element::asUInt64(std::string_view name) const {
    const std::string text = asString(name);
    return text.empty() ? 0 : whole<unsigned long long>("uint64", text);
}

double Element::asDouble(std::string_view name) const { return number(name); }

bool Element::asBool(std::string_view name) const {
    const std::string text = asString(name);
    return !text.empty() && truth(text);
}

std::string Element::asString(std::string_view name) const {
    const Element* const key = keyed(name);
    return key ? key->text_ : "";
}

Vec3 Element::asVec3(std::string_view name) const {
    const std::string text = asString(name);
    return text.empty() ? Vec3{} : std::any_cast<Vec3>(valuetext::parse("vec3", text));
}

Pose Element::asPose(std::string_view name) const {
    const std::string text = asString(name);
    return text.empty() ? Pose{} : std::any_cast<Pose>(valuetext::parse("pose", text));
}

const std::any& Element::value() const {
    const Element& held = holder();
    read_ = held.type_.empty() ? std::any() : valuetext::parse(held.type_, held.text_);
    return read_;
}

void Element::put(std::string type, std::string text) {
    auto& held = const_cast<Element&>(holder());
    std::swap(held.type_, type);
    std::swap(held.text_, text);
    try {
        const std::any written = held.value();
        for (ValueObserver* const observer : std::vector(observers()))
            observer->valueWritten(held, written);
    } catch (...) {
        held.type_ = type;
        held.text_ = text;
        throw;
    }
}

void Element::setValue(const std::any& value) {
    put(value.has_value() ? Attr::Type(value.type()) : "", valuetext::render(value));
}

void Element::setValueFromString(std::string_view text) {
    const std::string& type = holder().type_;
    setValue(valuetext::parse(type.empty() ? "string" : type, text));
}

std::string Element::getStringFromValue() const { return holder().text_; }

void Element::addAttribute(std::string_view name, std::string_view type, std::string_view value) {
    touch(name)->setValue(valuetext::parse(type, value));
}

void Element::Subscribe(ValueObserver& observer) { observers().push_back(&observer); }
void Element::Unsubscribe(ValueObserver& observer) { std::erase(observers(), &observer); }

}  // namespace sdf
