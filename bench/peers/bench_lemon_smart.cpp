// LEMON SmartDigraph.
#include "LemonWorkloads.h"

int main(int argc, char** argv)
{
    bench::LemonWorkloads<lemon::SmartDigraph>(bench::readArguments(argc, argv)).run();
}
