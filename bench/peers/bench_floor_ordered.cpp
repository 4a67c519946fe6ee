// The floor, of the standard library's ordered maps.
#include "FloorParts.h"
#include "FloorWorkloads.h"

int main(int argc, char** argv)
{
    bench::FloorWorkloads<bench::OrderedParts>(bench::readArguments(argc, argv)).run();
}
