// The README's first caller snippet as a program: find_package(QuarnQelClient) with exactly its
// two targets, and one call of the library. Nothing is registered here, so qelInit answers -1;
// what this program shows is that the installed library starts at all, finding its own
// dependencies by itself, without LD_LIBRARY_PATH and wherever the prefix was moved.

#include <cstdio>

#include "qel.h"

int main() {
    const int answer = qelInit();
    std::printf("qelInit() answered %d (no service is declared here)\n", answer);
    return answer == -1 ? 0 : 1;
}
