// sscctl: the command-line client of a running ssc-node.

#include "app/SscctlCommand.h"

#include <iostream>

int main(int argc, char** argv)
{
    app::SscctlCommand command;
    std::string error;
    if (argc < 2) {
        std::cerr << app::sscctlUsage();
        return app::kUsage;
    }
    if (!app::parseSscctl({argv + 1, argv + argc}, command, error)) {
        std::cerr << "sscctl: " << error << "\n";
        return app::kUsage;
    }
    return app::runSscctl(command, std::cout, std::cerr);
}
