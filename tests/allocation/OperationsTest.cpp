#include "ExportedOperations.h"
#include "LayoutSubject.h"
#include "SceneSubject.h"
#include "ValueSubject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

template <class Subject>
void addSymbols(std::vector<Operation<Subject>> const& operations, std::set<std::string>& symbols)
{
    for (Operation<Subject> const& operation : operations) symbols.insert(std::string(operation.symbol));
}

std::set<std::string> symbolsInTables()
{
    std::set<std::string> symbols;
    addSymbols(sceneOperations(), symbols);
    addSymbols(nodeOperations(), symbols);
    addSymbols(pinOperations(), symbols);
    addSymbols(connectionOperations(), symbols);
    addSymbols(busySceneOperations(), symbols);
    addSymbols(valueOperations(), symbols);
    addSymbols(layoutOperations(), symbols);
    return symbols;
}

/// Says in the end how much was tried.
class FailuresTold : public testing::Environment
{
public:
    void TearDown() override
    {
        std::printf("allocation: %ld calls met a failed allocation\n", failuresCaused());
    }
};

[[maybe_unused]] testing::Environment* const failuresTold =
    testing::AddGlobalTestEnvironment(new FailuresTold);

std::vector<std::string> difference(std::set<std::string> const& from, std::set<std::string> const& taken)
{
    std::vector<std::string> rest;
    std::set_difference(from.begin(), from.end(), taken.begin(), taken.end(), std::back_inserter(rest));
    return rest;
}

} // namespace

// A private constructor shares its name with the public ones.
TEST(AllocationFailure, IsTriedInEveryExportedOperation)
{
    EXPECT_THAT(
        difference(exportedOperations(), symbolsInTables()),
        testing::ElementsAre(
            "KS_String::KS_String(std::basic_string_view<char, std::char_traits<char>>, unsigned int)"));
}

// Inline ones are written without their parameters.
TEST(AllocationFailure, IsTriedInNoOperationThatIsExportedNoMore)
{
    std::set<std::string> exported;
    for (std::string const& symbol : symbolsInTables())
        if (symbol.find('(') != std::string::npos) exported.insert(symbol);
    EXPECT_THAT(difference(exported, exportedOperations()), testing::IsEmpty());
}

TEST(AllocationFailure, LeavesAGraphWholeWhateverOperationOfItsSceneMeetsIt)
{
    expectPromisesKept(sceneOperations());
}

TEST(AllocationFailure, LeavesAGraphWholeWhateverOperationOfANodeMeetsIt)
{
    expectPromisesKept(nodeOperations());
}

TEST(AllocationFailure, LeavesAGraphWholeWhateverOperationOfAPinMeetsIt)
{
    expectPromisesKept(pinOperations());
}

TEST(AllocationFailure, LeavesAGraphWholeWhateverOperationOfAConnectionMeetsIt)
{
    expectPromisesKept(connectionOperations());
}

TEST(AllocationFailure, LeavesAGraphWholeWhoseListsAreIndexed)
{
    expectPromisesKept(busySceneOperations());
}

TEST(AllocationFailure, LeavesTextsListsMessagesAndSettingsWhole)
{
    expectPromisesKept(valueOperations());
}

TEST(AllocationFailure, LeavesALayoutWhole)
{
    for (unsigned int const numberOfNotes : {5u, 4u})
    {
        LayoutSubject::numberOfNotes = numberOfNotes;
        expectPromisesKept(layoutOperations());
    }
}

} // namespace kestrel::graph::test
