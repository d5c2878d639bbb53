#pragma once

#include <memory>
#include <string>
#include <vector>

#include "smartcomp/Lifecycle.h"
#include "tests/smartcomp/Cell.h"

namespace trel::test {

inline const std::string longText = "another text that does not fit into a string itself either";

/// A small cell that has something for every operation, made anew for each try.
///
///   station logic ( Cell 10 ( Lamp 11, Belt 12, Group 13 ( Inner 14 ) ), Robot 20 )
///
/// All but the robot have the inputs 1 and 3, the output 2 and the pulsing output 4,
/// and the properties 1 (a number), 2 (a text), 3 (an object) and 4 (a vector). Within
/// Cell, Lamp.2 leads to Belt.1, Group.1 and Robot.1, Lamp.4 to Belt.1 and Belt.3, and
/// Lamp's properties are bound to those of Belt and Group; so it goes from Group to
/// Inner.
class Scene {
public:
    static constexpr unsigned cellId = 10;
    static constexpr unsigned lampId = 11;
    static constexpr unsigned beltId = 12;
    static constexpr unsigned groupId = 13;
    static constexpr unsigned innerId = 14;
    static constexpr unsigned newId = 15;
    static constexpr unsigned robotId = 20;

    Scene();
    /// Removes everything, and expects that nothing lives on.
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    static Box& cell() { return *find<Box>(cellId); }
    static Plain& lamp() { return *find<Plain>(lampId); }
    static Framed& belt() { return *find<Framed>(beltId); }
    static Box& group() { return *find<Box>(groupId); }

    /// The component `id`, or null.
    template <typename Type>
    static Type* find(unsigned id) {
        return dynamic_cast<Type*>(sdf::SdfManager::inst()->find(id));
    }

    /// Removes the component `id`, if there is one, and its elements.
    static void takeAway(unsigned id);

    /// All values are as they were made, and no setting is under way.
    static void restore();

    /// What can be seen: the answer, the document, and what is no mirror.
    std::string state() const;

    /// What of all components is other than its element.
    static Lines differences();

    std::string answer;  // of the operation
    ElementPtr element;  // that it works on
    std::vector<ElementPtr> elements;

private:
    Controller robot_{robotId, "Robot"};
};

}  // namespace trel::test
