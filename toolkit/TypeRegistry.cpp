#include "toolkit/TypeRegistry.h"

#include "toolkit/TmyBinaryTree.h"

#include <memory>
#include <typeinfo>
#include <vector>

namespace orva::toolkit {

namespace {

// A plain pointer: objects are made before this file's own construction and after its destruction.
constinit TmyBinaryTree* registry = nullptr;

std::uintptr_t ClassOf(const TmyObject& object) {
    return reinterpret_cast<std::uintptr_t>(&typeid(object));
}

} // namespace

void CreateTypeRegistry() {
    if (registry == nullptr) {
        registry = new TmyBinaryTree;
    }
}

TypeRegistryStatistics DeleteTypeRegistry() {
    if (registry == nullptr) {
        return {};
    }
    const std::unique_ptr<TmyBinaryTree> tree(registry);
    registry = nullptr;
    const TypeRegistryStatistics statistics{tree->Count(), tree->EmptyCount(), tree->Depth()};
    std::vector<void*> records(statistics.count);
    tree->Collect(records.data(), statistics.count);
    for (void* record : records) {
        delete static_cast<TypeRecord*>(record);
    }
    return statistics;
}

void RegisterType(const TmyObject* object, TypeId typeId, const char* name) {
    if (registry == nullptr) {
        return;
    }
    const std::uintptr_t type = ClassOf(*object);
    if (registry->Find(type) == nullptr) {
        registry->Insert(type, new TypeRecord{type, static_cast<std::uint32_t>(typeId), name});
    }
}

const TypeRecord* FindType(const TmyObject* object) {
    if (registry == nullptr || object == nullptr) {
        return nullptr;
    }
    return static_cast<const TypeRecord*>(registry->Find(ClassOf(*object)));
}

} // namespace orva::toolkit
