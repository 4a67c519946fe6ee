// ks_graph with a host that derives every class.
#include "../DerivedHost.h"
#include "KsGraphWorkloads.h"

int main(int argc, char** argv)
{
    bench::KsGraphWorkloads<bench::DerivedHost>(bench::readArguments(argc, argv)).run();
}
