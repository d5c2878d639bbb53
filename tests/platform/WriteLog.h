#pragma once

#include <string>
#include <vector>

#include "platform/sdf/Element.h"
#include "platform/sdf/ValueText.h"

namespace trel::test {

/// Writes down, while it lives, what the document tells of values written:
/// "tag=text".
class WriteLog : public sdf::ValueObserver {
public:
    WriteLog() { sdf::Element::Subscribe(*this); }
    ~WriteLog() override { sdf::Element::Unsubscribe(*this); }

    void valueWritten(sdf::Element& element, const std::any& value) override {
        lines.push_back(std::string(element.tag()) + "=" + sdf::valuetext::render(value));
    }

    std::vector<std::string> lines;
};

}  // namespace trel::test
