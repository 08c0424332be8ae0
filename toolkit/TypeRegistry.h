/// Numbers and names of the toolkit's classes, for the trace.
#pragma once

#include "toolkit/TmyObject.h"

#include <cstdint>

namespace orva::toolkit {

/// The classes' numbers. They are printed, never sent or stored.
enum class TypeId : std::uint32_t {
    Control = 1,
    Component = 3,
    Panel = 4,
    Button = 5,
    ScrollBar = 6,
    Edit = 7,
    ListBox = 9,
    ComboBox = 10,
    IntEdit = 14,
    Label = 19,
    Slider = 22,
    UpDown = 27,
    HoverMonitor = 33,
    Application = 34,
    Object = 36,
    Btn = 38,
    Btn2 = 39,
    LightLabel = 40,
    MsgBox = 44,
    FloatSel = 46,
    FloatSel2 = 47,
    FloatEdit = 52,
    Profiler = 65,
    Registry = 67,
    Buffer = 71,
    List = 74,
    TimeCounter = 76,
    LightPanel = 92,
};

/// What the registry knows of one class.
struct TypeRecord {
    std::uintptr_t type;  ///< identity of the class
    std::uint32_t typeId; ///< its number
    const char* name;     ///< its name, a literal; may be null
};

/// What `DeleteTypeRegistry` found.
struct TypeRegistryStatistics {
    std::uint32_t count; ///< classes
    std::uint32_t empty; ///< links of the tree that lead nowhere
    std::uint32_t depth; ///< of the tree
};

/// Makes the process's type registry, if there is none. The application does so at its start.
void CreateTypeRegistry();

/// Frees the registry and all its records; without one, all statistics are 0. From then on `RegisterType`
/// does nothing again.
TypeRegistryStatistics DeleteTypeRegistry();

/// Notes the class that `object` has at this moment, which in a constructor is the constructor's own, unless
/// there is no registry, or the class is known to it. [window thread]
void RegisterType(const TmyObject* object, TypeId typeId, const char* name);

/// The record of the class of `object`; null if it has none.
const TypeRecord* FindType(const TmyObject* object);

} // namespace orva::toolkit
