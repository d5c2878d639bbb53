#pragma once

#include "platform/rob/PoseTemplate.h"

namespace trel::rob {

struct Transform {
    PoseTemplate<double> pose;
};

}  // namespace trel::rob
