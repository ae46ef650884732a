// uncaught_exception.cpp - what happens to an exception that nobody catches.
//
// The library's own handler writes the exception's name, and for that brings a demangler into the
// program, a quarter of its size. The name would go to a screen that the crash handler leaves at
// once, so the program does without. That is gcc's library; others keep their handler.
#include <cstdlib>
#include <exception>

#ifdef __GLIBCXX__
void __gnu_cxx::__verbose_terminate_handler()
{
    std::abort();
}
#endif
