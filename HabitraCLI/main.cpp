#include <HabitraCLI/CommandLine.h>

int main(int argc, char** argv) { return habitra::runCommandLine({argv, argv + argc}); }
