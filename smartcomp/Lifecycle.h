#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/sdf/Element.h"
#include "platform/visual/Visual.h"
#include "smartcomp/Export.h"
#include "smartcomp/SmartComponent.h"

/// Making, loading, bringing back and removing components. A component stands
/// in three places: its element in the document, its id in the object table,
/// its pointer in the list of components. Nothing here tells the broker, and
/// nothing is undone when a later step throws.
///
/// An id or a type name that is not known throws std::out_of_range "invalid
/// unordered_map<K, T> key"; an object that is no aggregation, or no component,
/// where one is needed throws std::bad_cast.
namespace trel::smartcomp {

/// Makes a component from an element that describes it whole and stands where
/// it belongs. The parent is not told.
/// \throws std::logic_error "object exists" if its id is taken; the component is
/// then lost. Where memory ends before it is in the object table, it is destroyed,
/// and its element stays.
TREL_API SmartComponent* Create(std::shared_ptr<sdf::Element> element);

/// Makes a new component of a registered type, with a new element, as a child
/// of the aggregation `parentId`. A type name that is not known leaves the
/// element and the entry in the parent behind.
TREL_API SmartComponent* Build(const std::string& typeName, unsigned id, const std::string& name,
                               unsigned parentId);

/// Brings back a removed component from its element, then the components that
/// it contained from theirs, and gives it back to its parent, at a diagram
/// position when there is one.
TREL_API SmartComponent* Recover(std::shared_ptr<sdf::Element> element,
                                 const std::vector<std::shared_ptr<sdf::Element>>& subElements,
                                 const std::optional<std::pair<int, int>>& xy);

/// Makes the components of a document that was just read, in document order,
/// all but the station logic.
TREL_API void Load();

/// Removes a component from its parent, the object table and the document. Its
/// pointer stays in the list of components.
TREL_API void RemoveSmartComponent(unsigned id);

/// The same without telling the parent, for the inner components of an
/// aggregation that goes as a whole.
TREL_API void RemoveSubSmartComponent(unsigned id);

/// Every component that was ever made, in the order of making. The pointers of
/// removed ones stay in it: test an id that you kept in the object table before
/// you follow a pointer.
TREL_API const std::list<SmartComponent*>& GetAllSmartComponents();

/// Has the component's type dress its graphics.
TREL_API void BuildVisual(SmartComponent* component, visual::Visual* visual);

}  // namespace trel::smartcomp
