// The scripting host's shell object, called by the names of its methods.
#include "platform/windows/script_shell.h"

#include "platform/windows/wide_text.h"

#include <cstdint>
#include <iterator>
#include <vector>

namespace {

// A value of any type that a method takes or returns.
struct Variant : VARIANT {
  Variant() : VARIANT() {}  // of type VT_EMPTY
  explicit Variant(const std::string& text) : VARIANT() {
    const std::wstring wide = widen(text);
    vt = VT_BSTR;
    bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { VariantClear(this); }
};
static_assert(sizeof(Variant) == sizeof(VARIANT), "an array of them is passed to a method");

}  // namespace

std::optional<ScriptShell> ScriptShell::create() {
  CLSID identifier;
  if (FAILED(CLSIDFromProgID(L"WScript.Shell", &identifier)))
    return std::nullopt;
  void* created = nullptr;
  if (FAILED(CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &created)))
    return std::nullopt;
  return ScriptShell(static_cast<IDispatch*>(created));
}

std::optional<std::string> ScriptShell::call(const wchar_t* method,
                                             std::initializer_list<std::string> arguments) const {
  std::wstring name = method;
  wchar_t* names = name.data();
  DISPID identifier = 0;
  if (FAILED(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &identifier)))
    return std::nullopt;
  std::vector<Variant> values(std::rbegin(arguments), std::rend(arguments));  // the last one first
  DISPPARAMS parameters{values.data(), nullptr, static_cast<UINT>(values.size()), 0};
  Variant result;
  if (FAILED(object->Invoke(identifier, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                            &result, nullptr, nullptr)))
    return std::nullopt;
  if (result.vt == VT_BSTR)
    return narrow({result.bstrVal ? result.bstrVal : L"", SysStringLen(result.bstrVal)});
  if (result.vt == VT_I4)
    return std::to_string(static_cast<std::uint32_t>(result.lVal));
  return result.vt == VT_EMPTY ? std::optional<std::string>("") : std::nullopt;
}
