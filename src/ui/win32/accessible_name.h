// Names by which screen readers call controls.
#pragma once

#include <memory>
#include <string>

#include <oleacc.h>
#include <windows.h>

struct ReleaseService {
  void operator()(IAccPropServices* service) const { service->Release(); }
};
using NamingService = std::unique_ptr<IAccPropServices, ReleaseService>;

// The system's service for it; null where there is none. COM must be initialised on the thread.
NamingService make_naming_service();

// Names a control; without a name the system takes its text. Nothing depends on its success.
void set_accessible_name(const NamingService& service, HWND control, const std::string& name);
