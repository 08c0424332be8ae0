#include "toolkit/TmyObject.h"

#include "toolkit/Trace.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

TmyObject::TmyObject() : traceEnabled(TraceLevel()) {
    RegisterType(this, TypeId::Object, "Object");
}

} // namespace orva::toolkit
