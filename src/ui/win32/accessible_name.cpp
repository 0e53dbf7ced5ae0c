// Names by which screen readers call controls.
#include <initguid.h>  // before the header that declares the identifiers

#include "ui/win32/accessible_name.h"

#include "platform/windows/wide_text.h"

NamingService make_naming_service() {
  void* made = nullptr;
  if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                              IID_IAccPropServices, &made)))
    return nullptr;
  return NamingService(static_cast<IAccPropServices*>(made));
}

void set_accessible_name(const NamingService& service, HWND control, const std::string& name) {
  if (service && !name.empty())
    service->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                            PROPID_ACC_NAME, widen(name).c_str());
}
