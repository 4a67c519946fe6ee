// LEMON ListDigraph.
#include "LemonWorkloads.h"

int main(int argc, char** argv)
{
    bench::LemonWorkloads<lemon::ListDigraph>(bench::readArguments(argc, argv)).run();
}
