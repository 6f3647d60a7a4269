#include "Platform/Foundation/Thread.h"

#include <array>
#include <pthread.h>
#include <unistd.h>

namespace velloren {

std::string currentThreadDescription() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return "<Thread: " + std::to_string(gettid()) + ">{name = " + name.data() + "}";
}

} // namespace velloren
