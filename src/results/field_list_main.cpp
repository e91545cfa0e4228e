// torvex_field_list: prints python/torvex/fields.py.
#include <iostream>

#include "results/field_list.hpp"

int main() {
    std::cout << torvex::python_field_list();
    return 0;
}
