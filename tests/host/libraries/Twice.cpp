// A library that brings a type of a name that the program's own library brings.
#include <QString>

#include <memory>

#include "smartcomp/Manager.h"
#include "smartcomp/TypeLibrary.h"

namespace {

trel::smartcomp::SmartComponent* make(std::shared_ptr<sdf::Element>) { return nullptr; }

}  // namespace

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi; }

void trelRegisterComponents() {
    trel::smartcomp::Manager::inst()->registerType("Timer", make, make, [] { return QString(); });
}
