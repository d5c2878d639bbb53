#pragma once

namespace trel::visual {

class [[gnu::visibility("default")]] Visual {
public:
    virtual ~Visual() = default;
};

}  // namespace trel::visual
