#include "SceneMaps.h"

#include "support/SceneInspector.h"

#include <string_view>

namespace kestrel::graph::test::model
{

namespace
{

template <class Expected, class Actual, class Object>
void compareMap(char const* what, Expected const& expected, Actual const& actual,
                std::vector<Object*> const& objects, Difference& difference)
{
    auto entry = actual.begin();
    for (auto const& [key, index] : expected)
    {
        if (entry == actual.end()) return difference.note(what, " lacks the key ", key);
        if (!(entry->first == key))
            return difference.note(what, " has the key ", entry->first, " where the model has ", key);
        if (entry->second != objects[static_cast<std::size_t>(index)])
            return difference.note(what, " leads from ", key, " to another one than in the model");
        ++entry;
    }
    if (entry != actual.end()) difference.note(what, " has the key ", entry->first, " that the model lacks");
}

// Texts order as bytes in the model; the keys convert to views of theirs.
struct PinNames
{
    struct Iterator
    {
        std::map<KS_String, GraphNodePin*>::const_iterator at;
        std::pair<std::string_view, GraphNodePin*> entry{};

        std::pair<std::string_view, GraphNodePin*> const* operator->()
        {
            entry = {at->first, at->second};
            return &entry;
        }
        void operator++() { ++at; }
        bool operator==(Iterator const& other) const { return at == other.at; }
    };

    Iterator begin() const { return {names.begin()}; }
    Iterator end() const { return {names.end()}; }

    std::map<KS_String, GraphNodePin*> const& names;
};

void compareCounts(unsigned int source, unsigned int target, int all, int notImplicit, int expectedAll,
                   int expectedNotImplicit, Difference& difference)
{
    if (all != expectedAll || notImplicit != expectedNotImplicit)
        difference.note("the adjacency counts from ", source, " to ", target, " are ", all, " and ",
                        notImplicit, ", but ", expectedAll, " and ", expectedNotImplicit, " in the model");
}

// A pair of ids that one of the two does not hold counts 0 there.
void compareAdjacency(GraphScene const& scene, Model const& model, Difference& difference)
{
    auto expected = model.adjacency.begin();
    auto const end = model.adjacency.end();
    auto const skipTo = [&](std::pair<unsigned int, unsigned int> const& ids)
    {
        for (; expected != end && std::pair(expected->source, expected->target) < ids; ++expected)
            compareCounts(expected->source, expected->target, 0, 0, expected->all, expected->notImplicit,
                          difference);
    };
    for (auto const& [source, targets] : SceneInspector::adjacency(scene))
        for (auto const& [target, counts] : targets)
        {
            skipTo({source, target});
            bool const known = expected != end && expected->source == source && expected->target == target;
            compareCounts(source, target, counts.all, counts.notImplicit, known ? expected->all : 0,
                          known ? expected->notImplicit : 0, difference);
            if (known) ++expected;
        }
    for (; expected != end; ++expected)
        compareCounts(expected->source, expected->target, 0, 0, expected->all, expected->notImplicit,
                      difference);
}

} // namespace

void compareMaps(GraphScene const& scene, Model const& model, std::vector<GraphNodeBase*> const& nodes,
                 std::vector<GraphNodePin*> const& pins, Difference& difference)
{
    compareMap("the map of nodes by id", model.nodesById, SceneInspector::nodesById(scene), nodes,
               difference);
    compareMap("the map of pins by id", model.pinsById, SceneInspector::pinsById(scene), pins, difference);
    compareMap("the map of pins by full name", model.pinsByFullName,
               PinNames{SceneInspector::pinsByFullName(scene)}, pins, difference);
    compareAdjacency(scene, model, difference);
}

} // namespace kestrel::graph::test::model
