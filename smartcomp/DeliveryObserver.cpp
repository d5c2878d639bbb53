#include "smartcomp/DeliveryObserver.h"

#include <utility>

namespace trel::smartcomp {

constinit DeliveryObserver* DeliveryObserver::present_ = nullptr;

DeliveryObserver* DeliveryObserver::replace(DeliveryObserver* observer) {
    return std::exchange(present_, observer);
}

}  // namespace trel::smartcomp
