#pragma once

#include "platform/Export.h"
#include "platform/sdf/IdTable.h"

namespace sdf {

class SdfObject;

/// Document objects by id, which may be null.
class TREL_PLATFORM_API ObjectTable : public IdTable<SdfObject*> {
public:
    /// \throws std::out_of_range where there is none.
    SdfObject* at(unsigned id) const;

    /// The object under `id`, entered as null where there is none. Good until the table
    /// changes.
    SdfObject*& operator[](unsigned id);
};

}  // namespace sdf
