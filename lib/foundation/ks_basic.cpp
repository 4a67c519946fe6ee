#include <foundation/ks_basic.h>

#include <foundation/KS_Class.h>

#include <cstdio>

namespace kestrel
{

KS_MetaClass<KS_Class> const metaClass_KS_Class("KS_Class", nullptr, "The base of the graph classes.");

KS_MetaClassBase::KS_MetaClassBase(KS_String const& name, KS_MetaClassBase const* parent,
                                   KS_String const& description)
    : name_(name), description_(description), parent_(parent)
{
    if (parent != nullptr) parentName_ = parent->getName();
}

KS_MetaClassBase::~KS_MetaClassBase() = default;

bool KS_MetaClassBase::isKindOf(KS_MetaClassBase const& other) const
{
    for (KS_MetaClassBase const* meta = this; meta != nullptr; meta = meta->parent_)
        if (meta == &other) return true;
    return false;
}

void KS_MetaClassBase::printf() const
{
    std::printf("%s (%s): %s\n", name_.c_str(), parentName_.c_str(), description_.c_str());
}

} // namespace kestrel
