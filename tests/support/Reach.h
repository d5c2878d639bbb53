#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "smartcomp/Aggregation.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Marks.h"
#include "smartcomp/Property.h"
#include "smartcomp/SmartComponent.h"

/// The private members whose rules are checked: an explicit instantiation may
/// name them.
namespace trel::test::reach {

template <typename Tag, typename Tag::Member member>
struct Grant {
    friend typename Tag::Member get(Tag) { return member; }
};

struct Order {
    using Member = std::vector<unsigned> smartcomp::Aggregation::*;
    friend Member get(Order);
};
template struct Grant<Order, &smartcomp::Aggregation::order_>;

struct Connections {
    using Member = smartcomp::Aggregation::ConnectionTable smartcomp::Aggregation::*;
    friend Member get(Connections);
};
template struct Grant<Connections, &smartcomp::Aggregation::connections_>;

struct SettingProperties {
    using Member = smartcomp::Marks<std::string> smartcomp::SmartComponent::*;
    friend Member get(SettingProperties);
};
template struct Grant<SettingProperties, &smartcomp::SmartComponent::settingPropertyValues_>;

struct SettingSignals {
    using Member = smartcomp::Marks<SignalValue> smartcomp::SmartComponent::*;
    friend Member get(SettingSignals);
};
template struct Grant<SettingSignals, &smartcomp::SmartComponent::settingSignalValues_>;

struct TypeIndex {
    using Member = smartcomp::PropertyType smartcomp::Property::*;
    friend Member get(TypeIndex);
};
template struct Grant<TypeIndex, &smartcomp::Property::typeIndex_>;

struct IsInt {
    using Member = bool (*)(double, double);
    friend Member get(IsInt);
};
template struct Grant<IsInt, &smartcomp::Property::isInt>;

struct DescFunc {
    using Member = smartcomp::Manager::DescFunction (smartcomp::Manager::*)(std::string_view) const;
    friend Member get(DescFunc);
};
template struct Grant<DescFunc, &smartcomp::Manager::getDescFunc>;

}  // namespace trel::test::reach

namespace trel::test {

/// The ids of the signal connections in the order of delivery.
inline std::vector<unsigned>& orderOf(smartcomp::Aggregation& aggregation) {
    return aggregation.*get(reach::Order{});
}
inline smartcomp::Aggregation::ConnectionTable& tableOf(smartcomp::Aggregation& aggregation) {
    return aggregation.*get(reach::Connections{});
}

/// The settings under way.
inline auto settingProperties(const smartcomp::SmartComponent& component) {
    return (component.*get(reach::SettingProperties{})).entries();
}
inline auto settingSignals(const smartcomp::SmartComponent& component) {
    return (component.*get(reach::SettingSignals{})).entries();
}

/// Makes as if a setting of the member were under way.
inline void markProperty(smartcomp::SmartComponent& component, unsigned id,
                         const std::string& value) {
    (component.*get(reach::SettingProperties{})).begin(id, value);
}
inline void markSignal(smartcomp::SmartComponent& component, unsigned id, SignalValue value) {
    (component.*get(reach::SettingSignals{})).begin(id, value);
}

inline unsigned typeIndexOf(const smartcomp::Property& property) {
    return static_cast<unsigned>(property.*get(reach::TypeIndex{}));
}
inline bool isInt(double x, double tolerance) { return get(reach::IsInt{})(x, tolerance); }

inline smartcomp::Manager::DescFunction descFuncOf(std::string_view name) {
    return (smartcomp::Manager::inst()->*get(reach::DescFunc{}))(name);
}

}  // namespace trel::test
