#include <foundation/KS_Class.h>

namespace kestrel
{

KS_String const& KS_Class::getClassName() const
{
    return metaClass_KS_Class.getName();
}

KS_String const& KS_Class::getParentClassName() const
{
    return metaClass_KS_Class.getParentName();
}

KS_String const& KS_Class::getClassDescription() const
{
    return metaClass_KS_Class.getDescription();
}

KS_Class* KS_Class::createInstance() const
{
    return metaClass_KS_Class.createInstance();
}

bool KS_Class::isKindOf(KS_MetaClassBase const& other) const
{
    return metaClass_KS_Class.isKindOf(other);
}

void KS_Class::printMetaClass() const
{
    metaClass_KS_Class.printf();
}

KS_Class::~KS_Class() = default;

} // namespace kestrel
