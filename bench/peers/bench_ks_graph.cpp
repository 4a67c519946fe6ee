// ks_graph with the classes of the library themselves.
#include "KsGraphWorkloads.h"

int main(int argc, char** argv)
{
    bench::KsGraphWorkloads<bench::PlainHost>(bench::readArguments(argc, argv)).run();
}
