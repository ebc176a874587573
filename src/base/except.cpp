#include "except.h"

#include <csignal>

void _signal_except_translator(int signal) {
  throw cException("src/base/except", 6, static_cast<unsigned int>(signal), "Signal received");
}

void cException::init() {
  struct sigaction action = {};
  action.sa_handler = _signal_except_translator;
  // The handler is left by an exception, not by returning: without SA_NODEFER the
  // signal would stay blocked and the next fault would kill the process.
  action.sa_flags = SA_NODEFER;
  sigemptyset(&action.sa_mask);
  for (int signal : {SIGSEGV, SIGFPE, SIGBUS}) sigaction(signal, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGHUP, SIG_IGN);
}
