#include "platform/sdf/Document.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/sdf/DocumentCheck.h"
#include "platform/sdf/DocumentReader.h"
#include "platform/sdf/DocumentWriter.h"
#include "platform/sdf/FileText.h"

namespace sdf {

namespace {

std::string located(const std::string& file, Element::Place place, const std::string& fault) {
    std::string text = file;
    if (place.line != 0)
        text += ':' + std::to_string(place.line) + ':' + std::to_string(place.column);
    return text + ": " + fault;
}

// CR LF and CR alone are line ends too.
std::string withUnixLines(std::string_view text) {
    std::string lines;
    lines.reserve(text.size());
    while (true) {
        const std::size_t plain = std::min(text.find('\r'), text.size());
        lines += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) return lines;
        lines += '\n';
        text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
    }
}

std::string textOf(const std::filesystem::path& file) {
    try {
        return readFile(file);
    } catch (const FileFault& fault) {
        throw DocumentError(file.string(), {}, fault.what());
    }
}

}  // namespace

DocumentError::DocumentError(const std::string& file, Element::Place place,
                             const std::string& fault)
    : std::runtime_error(located(file, place, fault)), file_(file), place_(place), fault_(fault) {}

Document Document::read(const std::filesystem::path& file) {
    return fromText(textOf(file), file.string());
}

Document Document::read(const std::filesystem::path& file, std::vector<ValueFault>& faults) {
    return fromText(textOf(file), file.string(), faults);
}

Document Document::fromText(std::string_view text, const std::string& name) {
    return parsed(text, name, nullptr);
}

Document Document::fromText(std::string_view text, const std::string& name,
                            std::vector<ValueFault>& faults) {
    return parsed(text, name, &faults);
}

Document Document::parsed(std::string_view text, const std::string& name,
                          std::vector<ValueFault>* faults) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    std::string lines;
    if (text.find('\r') != std::string_view::npos) text = lines = withUnixLines(text);
    try {
        const Markup markup = checkMarkup(text, maxDepth);
        OnValueFault tell;
        if (faults)
            tell = [faults,
                    places = PlaceFinder(text)](const ValueTextFault& fault,
                                                const std::shared_ptr<Element>& element) mutable {
                faults->push_back({fault.kind(), places.placeOf(fault.offset()), fault.what(),
                                   element});
            };
        DocumentParts parts = readParts(text, markup, tell);
        Document document(std::move(parts.root));
        document.before_ = std::move(parts.before);
        document.after_ = std::move(parts.after);
        return document;
    } catch (const TextFault& fault) {
        throw DocumentError(name, PlaceFinder(text).placeOf(fault.offset()), fault.what());
    }
}

Document::Document(std::shared_ptr<Element> root) : root_(std::move(root)) {
    if (!root_) throw std::invalid_argument("a document needs a root element");
}

std::string Document::text(const LeftOut& leftOut) const {
    DocumentWriter writer(leftOut);
    try {
        for (const auto& note : before_) writer.write(*note);
        writer.write(*root_);
        for (const auto& note : after_) writer.write(*note);
    } catch (const WriteFault& fault) {
        throw DocumentError(std::string(root_->tag()), {}, fault.what());
    }
    return std::move(writer).text();
}

void Document::save(const std::filesystem::path& file, const LeftOut& leftOut) const {
    try {
        replaceFile(file, text(leftOut));
    } catch (const DocumentError& error) {
        throw DocumentError(file.string(), {}, error.fault());
    } catch (const FileFault& fault) {
        throw DocumentError(file.string(), {}, fault.what());
    }
}

}  // namespace sdf
