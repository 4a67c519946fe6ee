// The floor, of compact parts.
#include "FloorParts.h"
#include "FloorWorkloads.h"

int main(int argc, char** argv)
{
    bench::FloorWorkloads<bench::FlatParts>(bench::readArguments(argc, argv)).run();
}
