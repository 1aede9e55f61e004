// What libFuzzer calls. ZR_FUZZ_CHECK is the target's check.

#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/media_text_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ZR::test::ZR_FUZZ_CHECK(data, size);
    return 0;
}
