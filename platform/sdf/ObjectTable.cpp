#include "platform/sdf/ObjectTable.h"

#include <stdexcept>
#include <string>

namespace sdf {

SdfObject* ObjectTable::at(unsigned id) const {
    const const_iterator entry = find(id);
    if (entry == end()) throw std::out_of_range("no object has the id " + std::to_string(id));
    return entry->second;
}

SdfObject*& ObjectTable::operator[](unsigned id) {
    emplace(id, nullptr);
    return entered(id);
}

}  // namespace sdf
