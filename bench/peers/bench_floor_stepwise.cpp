// The floor, of compact parts, in the steps of a scene whose host may take part.
#include "FloorParts.h"
#include "FloorWorkloads.h"

int main(int argc, char** argv)
{
    bench::FloorWorkloads<bench::StepwiseParts>(bench::readArguments(argc, argv)).run();
}
