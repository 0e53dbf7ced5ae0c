// Libraries that the program loads while it runs.
#include "platform/prefix/library.h"

#include <dlfcn.h>

Result<void*> load_symbol(const std::string& library, const char* symbol) {
  void* const loaded = ::dlopen(library.c_str(), RTLD_NOW);
  void* const address = loaded ? ::dlsym(loaded, symbol) : nullptr;
  if (!address)
    return Failure{library, "load it", ::dlerror()};
  return address;
}
