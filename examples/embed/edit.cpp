// Sets a parameter of any file, which can be taken back: edit FILE NAME VALUE.
#include <clocale>
#include <cstdio>

#include "zet/deploy/Edit.h"

int main(int, char** arguments) try {
    std::setlocale(LC_ALL, "");  // what fails is told in the language of whoever runs it
    ZET::Deploy::Options options;
    options.needsConfigFile = false;  // the file need not have anything to do with the product
    ZET::Deploy::Product product("/etc/zet/zet.conf", options);
    const auto outcome = ZET::Deploy::SetParam(product, arguments[1], arguments[2], arguments[3]);
    std::printf("%s: %s, the original is kept as %s\n", outcome.path.c_str(), NameOf(outcome.result),
                outcome.reserve.c_str());
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
