#include "Interrupt.h"

#include <csignal>

namespace qxevolve {

namespace {

volatile std::sig_atomic_t Interrupted = 0;

extern "C" void NoteInterrupt(int Signal) {
  Interrupted = 1;
  std::signal(Signal, SIG_DFL);
}

} // namespace

TInterruptScope::TInterruptScope() {
  Interrupted = 0;
  std::signal(SIGINT, NoteInterrupt);
  std::signal(SIGTERM, NoteInterrupt);
  std::signal(SIGHUP, NoteInterrupt);
}

TInterruptScope::~TInterruptScope() {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  std::signal(SIGHUP, SIG_DFL);
}

bool TInterruptScope::IsInterrupted() { return Interrupted != 0; }

} // namespace qxevolve
