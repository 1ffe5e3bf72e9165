// brenta_agreement FOLDER: writes what the library does into five files.
#include "agreement.h"

#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

int main(int count, char** arguments) {
    using namespace brenta::test;
    if (count != 2) {
        std::fputs("usage: brenta_agreement FOLDER\n", stderr);
        return 2;
    }
    const std::pair<const char*, std::string (*)()> stories[] = {{"programs", TellOfPrograms},
                                                                 {"lengths", TellOfLengths},
                                                                 {"settings", TellOfSettings},
                                                                 {"registry", TellOfRegistry},
                                                                 {"documents", TellOfDocuments}};
    bool isGood = true;
    for (const auto& [name, tell] : stories) {
        std::ofstream file(std::string(arguments[1]) + "/" + name + ".txt", std::ios::binary);
        file << tell();
        isGood &= file.flush().good();
    }
    return isGood ? 0 : 1;
}
