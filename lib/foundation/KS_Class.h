/// @file
#pragma once

#include <foundation/foundation_api.h>
#include <foundation/ks_basic.h>

namespace kestrel
{

/// The polymorphic base of the graph classes and of the settings.
///
/// Its six meta-class operations describe one meta class, that of `KS_Class` itself, whatever the concrete
/// class of the object: no class of this library overrides them. Nothing here calls them; they are for hosts.
/// Objects may be deleted through a `KS_Class` pointer.
class KS_FOUNDATION_API KS_Class
{
public:
    KS_Class() = default;
    KS_Class(KS_Class const&) = default;
    KS_Class& operator=(KS_Class const&) = default;

    /// "KS_Class", for every object of the library.
    virtual KS_String const& getClassName() const;
    /// The empty text: the class has no parent.
    virtual KS_String const& getParentClassName() const;
    /// A sentence about the class.
    virtual KS_String const& getClassDescription() const;
    /// A new `KS_Class` that the caller owns.
    virtual KS_Class* createInstance() const;
    /// Whether `other` is the meta class of `KS_Class` or one of its parents.
    virtual bool isKindOf(KS_MetaClassBase const& other) const;
    /// Prints the meta class's description to standard output.
    virtual void printMetaClass() const;

    virtual ~KS_Class();
};

} // namespace kestrel
