#pragma once

#include "base/list_input.hpp"

namespace torvex {

// Header of an HGF raster.
struct HgfHeader {
    int columns = 0;
    int rows = 0;
};

// Reads the lines that begin with "%" and leaves `input` at the first that does not. Lines count up
// to their 80th character. Nothing is asked of what must be there. A wrong version or line ends the
// run with its message on the console too.
HgfHeader read_hgf_header(ListInput& input);

}  // namespace torvex
