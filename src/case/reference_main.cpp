// torvex_reference PAGE: prints a generated page of the documentation.
#include <iostream>
#include <string>

#include "case/reference_pages.hpp"

int main(int argc, char** argv) {
    const std::string page = argc == 2 ? argv[1] : "";
    if (page == "case-file") {
        std::cout << torvex::case_file_page();
    } else if (page == "stop-codes") {
        std::cout << torvex::stop_codes_page();
    } else {
        std::cerr << "usage: torvex_reference case-file|stop-codes\n";
        return 1;
    }
    return 0;
}
