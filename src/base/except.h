// cException: the one exception type of the system.
//
// It carries a message, a numeric code, and the source file and line that raised it. It is
// thrown by value and caught by reference. Only bounds errors of the base containers and
// translated fatal signals throw it; everything else reports failure through results.
//
// init() turns SIGSEGV, SIGFPE and SIGBUS into a cException (code = the signal number)
// thrown from the faulting instruction, and ignores SIGPIPE and SIGHUP. The whole program
// is compiled with -fnon-call-exceptions so that such an exception can leave the faulting
// code and reach the nearest handler.
#pragma once

#include <string>

class cException {
public:
  cException(const char* file, unsigned int line, unsigned int code, const char* message)
      : myMessage(message ? message : ""), myCode(code), myFile(file ? file : ""), myLine(line) {}

  static void init();

  const char* message() const { return myMessage.c_str(); }
  unsigned int code() const { return myCode; }
  const char* file() const { return myFile.c_str(); }
  unsigned int line() const { return myLine; }

private:
  std::string myMessage;
  unsigned int myCode;
  std::string myFile;
  unsigned int myLine;
};

// The handler behind init(): throws cException("src/base/except", 6, signal,
// "Signal received").
[[noreturn]] void _signal_except_translator(int signal);
