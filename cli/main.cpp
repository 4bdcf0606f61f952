#include "cli/CommandLine.h"

int main(int count, char** words)
{
    return veltrac::runCommandLine(count, words);
}
