/// The toolkit as a whole: one include for those who build windows with it.
#pragma once

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyBitmap24.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyControl.h"
#include "toolkit/TmyEvent.h"
#include "toolkit/TmyObject.h"
#include "toolkit/Trace.h"
#include "toolkit/TypeRegistry.h"
