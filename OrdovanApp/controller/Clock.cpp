#include "OrdovanApp/controller/Clock.h"

#include <chrono>

namespace ordovan {

double systemTime() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace ordovan
