#include <foundation/KS_Class.h>
#include <foundation/ks_basic.h>
#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>
#include <ks_graph/GraphSettings.h>
#include <ks_graph/Message.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace kestrel::test
{

namespace
{

using namespace graph;

template <class T>
constexpr bool isGraphObject = std::is_base_of_v<KS_Class, T>&& std::has_virtual_destructor_v<T>;

static_assert(isGraphObject<GraphNodeBase>);
static_assert(isGraphObject<GraphNodePin>);
static_assert(isGraphObject<GraphConnection>);
static_assert(isGraphObject<GraphScene>);
static_assert(isGraphObject<GraphSettings>);

static_assert(!std::is_base_of_v<KS_Class, Message>);
static_assert(std::is_polymorphic_v<Message>);
static_assert(!std::is_polymorphic_v<MessageHandler>);
static_assert(!std::is_base_of_v<KS_Class, GraphLayout>);
static_assert(std::is_polymorphic_v<GraphLayout>);
static_assert(!std::is_polymorphic_v<NoteDesc>);

static_assert(sizeof(KS_Class) == sizeof(void*));
static_assert(std::has_virtual_destructor_v<KS_Class>);
static_assert(std::has_virtual_destructor_v<KS_MetaClassBase>);
static_assert(std::is_base_of_v<KS_MetaClassBase, KS_MetaClass<KS_Class>>);
static_assert(std::is_same_v<decltype(metaClass_KS_Class), KS_MetaClass<KS_Class> const>);

/// A host's class that overrides none of the operations.
class Plain : public KS_Class
{
};

/// A host's class that describes itself.
class Described : public KS_Class
{
public:
    static KS_MetaClass<Described> const& metaClass()
    {
        static KS_MetaClass<Described> const meta("Described", &metaClass_KS_Class, "A described class.");
        return meta;
    }

    KS_String const& getClassName() const override { return metaClass().getName(); }
    KS_String const& getParentClassName() const override { return metaClass().getParentName(); }
    KS_String const& getClassDescription() const override { return metaClass().getDescription(); }
    KS_Class* createInstance() const override { return metaClass().createInstance(); }
    bool isKindOf(KS_MetaClassBase const& other) const override { return metaClass().isKindOf(other); }
    void printMetaClass() const override { metaClass().printf(); }
};

class Counted : public KS_Class
{
public:
    Counted() { ++living; }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;
    ~Counted() override { --living; }

    static inline int living = 0;
};

/// One object of every class that derives from KS_Class.
std::vector<std::unique_ptr<KS_Class>> oneOfEach()
{
    std::vector<std::unique_ptr<KS_Class>> objects;
    objects.push_back(std::make_unique<KS_Class>());
    objects.push_back(std::make_unique<Plain>());
    objects.push_back(std::make_unique<GraphNodeBase>());
    objects.push_back(std::make_unique<GraphNodePin>());
    objects.push_back(std::make_unique<GraphConnection>());
    objects.push_back(std::make_unique<GraphScene>());
    objects.push_back(std::make_unique<GraphSettings>());
    return objects;
}

TEST(ObjectBase, EveryClassDescribesItselfWithTheMetaClassOfTheBase)
{
    for (auto const& object : oneOfEach())
    {
        KS_Class const& constant = *object;
        SCOPED_TRACE(typeid(constant).name());
        EXPECT_EQ(&object->getClassName(), &metaClass_KS_Class.getName());
        EXPECT_EQ(&object->getParentClassName(), &metaClass_KS_Class.getParentName());
        EXPECT_EQ(&object->getClassDescription(), &metaClass_KS_Class.getDescription());
        EXPECT_TRUE(object->isKindOf(metaClass_KS_Class));
        EXPECT_FALSE(object->isKindOf(Described::metaClass()));
    }
}

TEST(ObjectBase, MetaClassIsNamedAfterTheBaseAndHasNoParent)
{
    EXPECT_STREQ(metaClass_KS_Class.getName().c_str(), "KS_Class");
    EXPECT_STREQ(metaClass_KS_Class.getParentName().c_str(), "");
    EXPECT_FALSE(metaClass_KS_Class.getDescription().isEmpty());
    EXPECT_NE(&metaClass_KS_Class.getName(), &metaClass_KS_Class.getParentName());
    EXPECT_NE(&metaClass_KS_Class.getName(), &metaClass_KS_Class.getDescription());
}

TEST(ObjectBase, EveryClassCreatesAnObjectOfTheBase)
{
    for (auto const& object : oneOfEach())
    {
        std::unique_ptr<KS_Class> const first(object->createInstance());
        std::unique_ptr<KS_Class> const second(object->createInstance());
        ASSERT_NE(first, nullptr);
        ASSERT_NE(second, nullptr);
        EXPECT_NE(first, second);
        EXPECT_NE(first.get(), object.get());
        KS_Class const& created = *first;
        EXPECT_TRUE(typeid(created) == typeid(KS_Class));
    }
}

TEST(ObjectBase, PrintsOneLineThatTellsOfTheMetaClass)
{
    ::testing::internal::CaptureStdout();
    metaClass_KS_Class.printf();
    std::string const expected = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(expected.find("KS_Class"), std::string::npos);
    EXPECT_NE(expected.find(metaClass_KS_Class.getDescription().c_str()), std::string::npos);
    EXPECT_EQ(std::count(expected.begin(), expected.end(), '\n'), 1);
    EXPECT_EQ(expected.back(), '\n');

    for (auto const& object : oneOfEach())
    {
        ::testing::internal::CaptureStdout();
        object->printMetaClass();
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), expected);
    }
}

TEST(ObjectBase, PrintsNamesAsTextNotAsFormats)
{
    KS_MetaClass<Plain> const parent("100%s", nullptr, "");
    KS_MetaClass<Plain> const meta("50%d", &parent, "25%n of %s");
    ::testing::internal::CaptureStdout();
    meta.printf();
    std::string const printed = ::testing::internal::GetCapturedStdout();
    std::size_t const name = printed.find("50%d");
    std::size_t const parentName = printed.find("100%s");
    std::size_t const description = printed.find("25%n of %s");
    ASSERT_NE(description, std::string::npos);
    EXPECT_LT(name, parentName);
    EXPECT_LT(parentName, description);
}

TEST(ObjectBase, DeletesTheConcreteObjectThroughTheBase)
{
    KS_Class* const object = new Counted;
    EXPECT_EQ(Counted::living, 1);
    delete object;
    EXPECT_EQ(Counted::living, 0);
}

TEST(ObjectBase, MakesAndDestroysEachElementOfAnArray)
{
    Counted* const objects = new Counted[5];
    EXPECT_EQ(Counted::living, 5);
    delete[] objects;
    EXPECT_EQ(Counted::living, 0);
}

TEST(ObjectBase, GraphClassesMayBeMadeAsArrays)
{
    GraphNodeBase* const nodes = new GraphNodeBase[3];
    GraphNodePin* const pins = new GraphNodePin[3];
    GraphConnection* const connections = new GraphConnection[3];
    GraphSettings* const settings = new GraphSettings[3];
    EXPECT_EQ(&nodes[2].getClassName(), &pins[2].getClassName());
    EXPECT_EQ(&nodes[2].getClassName(), &connections[2].getClassName());
    EXPECT_EQ(&nodes[2].getClassName(), &settings[2].getClassName());
    delete[] settings;
    delete[] connections;
    delete[] pins;
    delete[] nodes;
}

TEST(ObjectBase, HostMayOverrideEveryOperation)
{
    std::unique_ptr<KS_Class> const object = std::make_unique<Described>();
    EXPECT_STREQ(object->getClassName().c_str(), "Described");
    EXPECT_STREQ(object->getParentClassName().c_str(), "KS_Class");
    EXPECT_STREQ(object->getClassDescription().c_str(), "A described class.");
    EXPECT_TRUE(object->isKindOf(Described::metaClass()));
    EXPECT_TRUE(object->isKindOf(metaClass_KS_Class));
    std::unique_ptr<KS_Class> const created(object->createInstance());
    EXPECT_NE(dynamic_cast<Described*>(created.get()), nullptr);
    ::testing::internal::CaptureStdout();
    object->printMetaClass();
    EXPECT_NE(::testing::internal::GetCapturedStdout().find("Described"), std::string::npos);
}

TEST(MetaClass, IsKindOfItselfAndOfEveryParent)
{
    KS_MetaClass<Plain> const child("Child", &Described::metaClass(), "");
    KS_MetaClass<Plain> const stranger("Child", &metaClass_KS_Class, "");
    EXPECT_TRUE(child.isKindOf(child));
    EXPECT_TRUE(child.isKindOf(Described::metaClass()));
    EXPECT_TRUE(child.isKindOf(metaClass_KS_Class));
    EXPECT_FALSE(child.isKindOf(stranger));
    EXPECT_FALSE(Described::metaClass().isKindOf(child));
    EXPECT_FALSE(metaClass_KS_Class.isKindOf(child));
    EXPECT_TRUE(metaClass_KS_Class.isKindOf(metaClass_KS_Class));
}

TEST(MetaClass, TakesItsParentsName)
{
    KS_MetaClass<Plain> const child("Child", &Described::metaClass(), "A child.");
    EXPECT_STREQ(child.getName().c_str(), "Child");
    EXPECT_STREQ(child.getParentName().c_str(), "Described");
    EXPECT_STREQ(child.getDescription().c_str(), "A child.");
    KS_MetaClass<Plain> const orphan("Orphan", nullptr, "");
    EXPECT_STREQ(orphan.getParentName().c_str(), "");
}

TEST(MetaClass, CreatesAnObjectOfItsClass)
{
    std::unique_ptr<KS_Class> const object(Described::metaClass().createInstance());
    EXPECT_NE(dynamic_cast<Described*>(object.get()), nullptr);
}

// A pointer to a virtual member function holds one more than the byte offset of its slot in this ABI.
#if defined(__GNUC__) && defined(__x86_64__)
template <class Operation>
std::ptrdiff_t slotOf(Operation operation)
{
    std::ptrdiff_t words[2];
    static_assert(sizeof operation == sizeof words);
    std::memcpy(words, &operation, sizeof words);
    return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(ObjectBase, OperationsStandInTheirOrder)
{
    EXPECT_EQ(slotOf(&KS_Class::getClassName), 0);
    EXPECT_EQ(slotOf(&KS_Class::getParentClassName), 1);
    EXPECT_EQ(slotOf(&KS_Class::getClassDescription), 2);
    EXPECT_EQ(slotOf(&KS_Class::createInstance), 3);
    EXPECT_EQ(slotOf(&KS_Class::isKindOf), 4);
    EXPECT_EQ(slotOf(&KS_Class::printMetaClass), 5);
}
#endif

// ---- The left-over error record

TEST(ErrorTooOld, IsAConstantThatStandsForItself)
{
    static_assert(errorTooOld.level == 1);
    static_assert(errorTooOld.count == 1);
    static_assert(errorTooOld.age == 0);
    EXPECT_STREQ(errorTooOld.text, "Error not in list because too old");
}

} // namespace

} // namespace kestrel::test
