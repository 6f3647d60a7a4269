#include "Platform/Foundation/Memory.h"

#include <malloc.h>

namespace velloren {

void keepLittleMemory() {
    constexpr int large = 4 << 20;
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, large); // left alone, it grows to what was once freed, and that much is kept
    mallopt(M_TRIM_THRESHOLD, large);
}

void giveBackUnusedMemory() {
    malloc_trim(0);
}

} // namespace velloren
