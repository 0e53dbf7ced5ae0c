// The scripting host's shell object, called by the names of its methods.
#include "platform/windows/script_shell.h"

#include "platform/windows/wide_text.h"

#include <cstdint>
#include <vector>

Variant::Variant(const std::string& text) {
  const std::wstring wide = widen(text);
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

std::optional<std::string> Variant::text() const {
  if (value.vt == VT_BSTR)
    return narrow({value.bstrVal ? value.bstrVal : L"", SysStringLen(value.bstrVal)});
  if (value.vt == VT_I4)
    return std::to_string(static_cast<std::uint32_t>(value.lVal));
  return std::nullopt;
}

std::optional<ScriptShell> ScriptShell::create() {
  CLSID identifier;
  if (FAILED(CLSIDFromProgID(L"WScript.Shell", &identifier)))
    return std::nullopt;
  void* created = nullptr;
  if (FAILED(CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &created)))
    return std::nullopt;
  return ScriptShell(static_cast<IDispatch*>(created));
}

std::optional<Variant> ScriptShell::call(const wchar_t* method,
                                         std::initializer_list<std::string> arguments) const {
  std::wstring name = method;
  wchar_t* names = name.data();
  DISPID identifier = 0;
  if (FAILED(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &identifier)))
    return std::nullopt;
  const std::vector<Variant> values(arguments.begin(), arguments.end());
  std::vector<VARIANT> passed;  // the last argument first, as Invoke expects them
  for (auto value = values.rbegin(); value != values.rend(); ++value)
    passed.push_back(value->get());
  DISPPARAMS parameters{passed.data(), nullptr, static_cast<UINT>(passed.size()), 0};
  Variant result;
  if (FAILED(object->Invoke(identifier, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                            result.out(), nullptr, nullptr)))
    return std::nullopt;
  return result;
}
