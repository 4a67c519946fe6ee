/// @file
/// The run-time class description behind `KS_Class`.
#pragma once

#include <foundation/KS_String.h>
#include <foundation/foundation_api.h>

namespace kestrel
{

class KS_Class;

/// The description of one class: its name, its parent's name and a sentence about it. Not copied; lives as
/// long as the library is loaded.
class KS_FOUNDATION_API KS_MetaClassBase
{
public:
    /// `parent` may be null; it is not owned.
    KS_MetaClassBase(KS_String const& name, KS_MetaClassBase const* parent, KS_String const& description);
    KS_MetaClassBase(KS_MetaClassBase const&) = delete;
    KS_MetaClassBase& operator=(KS_MetaClassBase const&) = delete;

    virtual ~KS_MetaClassBase();

    /// A new object of the class, owned by the caller.
    virtual KS_Class* createInstance() const = 0;

    /// Whether `other` is this meta class or one of its parents.
    virtual bool isKindOf(KS_MetaClassBase const& other) const;

    /// The name of the class.
    KS_String const& getName() const { return name_; }
    /// Empty for a class without parent.
    KS_String const& getParentName() const { return parentName_; }
    /// A sentence about the class.
    KS_String const& getDescription() const { return description_; }

    /// Writes name, parent and description to standard output, on one line.
    void printf() const;

private:
    KS_String name_;
    KS_String parentName_;
    KS_String description_;
    KS_MetaClassBase const* parent_;
};

/// The meta class of a default-constructible `Class`.
template <class Class>
class KS_MetaClass : public KS_MetaClassBase
{
public:
    using KS_MetaClassBase::KS_MetaClassBase;
    KS_Class* createInstance() const override { return new Class; }
};

/// The one meta class of the library. Built when the library is loaded.
extern KS_FOUNDATION_API KS_MetaClass<KS_Class> const metaClass_KS_Class;

/// A log record of the foundation library that has outlived its log. Nothing reads it.
struct KS_ErrorRecord
{
    /// All four stand for themselves.
    int level;
    int count;
    int age;
    char const* text;
};

/// The only record. Nothing reads it.
inline constexpr KS_ErrorRecord errorTooOld{1, 1, 0, "Error not in list because too old"};

} // namespace kestrel

#include <foundation/KS_Class.h> // KS_MetaClass<KS_Class> makes objects of it
