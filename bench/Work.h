#pragma once

#include <any>
#include <memory>
#include <mutex>
#include <shared_mutex>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"

namespace trel::bench {

/// A "signal" element with its six keys, holding the int 0.
std::shared_ptr<sdf::Element> signalElement(unsigned id, const char* name, const char* type,
                                            bool autoReset);

/// A "property" element of type "String" that holds a text.
std::shared_ptr<sdf::Element> textElement(unsigned id);

/// An object that is found through the object table, under its lock.
class DocumentObject : public sdf::SdfObject {
public:
    DocumentObject(unsigned id, std::shared_ptr<sdf::Element> element);
    ~DocumentObject() override;

    template <typename Node>
    static Node& follow(unsigned id) {
        auto& manager = *sdf::SdfManager::inst();
        const std::shared_lock lock(manager.mutex());
        return static_cast<Node&>(*manager.objects().find(id)->second);
    }
};

/// What a node does beside wiring: it compares, keeps the value, finds the key
/// "value" in its element and assigns it, tells the broker, and is found through
/// the object table. All contenders do it with the same code of the platform.
class DocumentWork : public DocumentObject {
public:
    using Link = unsigned;  // an id in the object table

    explicit DocumentWork(unsigned id)
        : DocumentObject(id, signalElement(id, "Out", "DigitalOutput", false)) {}

    Link link() const { return id(); }

    int value() const { return value_; }
    void keep(int value) {
        value_ = value;
        element()->touch("value")->setValue(std::any(value));
    }
    void tell() { broker::SignalBroker::scSignalValueChanged(2, id()); }

private:
    int value_ = 0;
};

/// The same without a document, a broker and a table: what a wire alone costs.
class NoWork {
public:
    using Link = NoWork*;

    explicit NoWork(unsigned) {}

    Link link() { return this; }

    template <typename Node>
    static Node& follow(Link link) {
        return static_cast<Node&>(*link);
    }

    int value() const { return value_; }
    void keep(int value) { value_ = value; }
    void tell() {}

private:
    int value_ = 0;
};

}  // namespace trel::bench
