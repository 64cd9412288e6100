/* Prints the version of the library that it runs on. */
#include <stdio.h>
#include <vellim/vellim.h>

int main(void) {
    char text[32] = "";
    GetTiffVersion(text, sizeof text);
    return puts(text) < 0;
}
