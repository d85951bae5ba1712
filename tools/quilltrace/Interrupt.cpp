#include "Interrupt.h"

#include <csignal>

namespace quilltrace {
namespace {
volatile std::sig_atomic_t g_interrupted = 0;

void onInterrupt(int) {
    g_interrupted = 1;
    (void)std::signal(SIGINT, SIG_DFL);
}
}  // namespace

void catchInterrupt() {
    (void)std::signal(SIGINT, onInterrupt);
    (void)std::signal(SIGTERM, onInterrupt);
}

bool interrupted() { return g_interrupted != 0; }

}  // namespace quilltrace
