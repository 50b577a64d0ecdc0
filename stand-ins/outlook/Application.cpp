#include "stand-ins/outlook/Application.h"

#include <map>

#include "stand-ins/outlook/ConnectionPoint.h"
#include "stand-ins/outlook/Explorer.h"
#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Inspector.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/NameSpace.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

DispatchPtr ActiveExplorer(Application& self) {
    return self.Owner().hasExplorer ? Make<Explorer>(self.SharedOwner()) : DispatchPtr();
}

DispatchPtr ActiveInspector(Application& self) {
    const auto inspectors = self.Owner().Inspectors();
    return inspectors.empty() ? DispatchPtr() : Make<Inspector>(self.SharedOwner(), inspectors.back());
}

DispatchPtr CreateItem(Application& self, long number) {
    const std::map<long, ItemKind> kinds = {
        {0, ItemKind::Mail}, {1, ItemKind::Appointment}, {3, ItemKind::Task}, {6, ItemKind::Post}};
    const auto kind = kinds.find(number);
    if (kind == kinds.end()) {
        throw Failure{E_INVALIDARG, L"Items of this kind cannot be created."};
    }
    return self.Owner().Show(std::make_shared<ItemRecord>(ItemData{.kind = kind->second}, Store::HomeOf(kind->second)));
}

DispatchPtr MapiSession(Application& self) {
    return Make<NameSpace>(self.SharedOwner());
}

DispatchPtr NamedSession(Application& self, const std::wstring& name) {
    if (_wcsicmp(name.c_str(), L"MAPI") != 0) {
        throw Failure{E_INVALIDARG, L"The only name space is MAPI."};
    }
    return MapiSession(self);
}

const Class& ApplicationClass() {
    static const Class members =
        ClassOf<Application>(L"Application", kApplicationId)
            .Get(L"Name", [](Application&) { return TextValue(L"Outlook"); })
            .Get(L"Version", [](Application& self) { return TextValue(self.Owner().options.version); })
            .Get(L"Session", [](Application& self) { return ObjectValue(MapiSession(self)); })
            .Call(L"GetNamespace", 1, 1,
                  [](Application& self, const Arguments& a) { return ObjectValue(NamedSession(self, a.Text(0))); })
            .Call(L"ActiveExplorer", 0, 0,
                  [](Application& self, const Arguments&) { return ObjectValue(ActiveExplorer(self)); })
            .Call(L"ActiveInspector", 0, 0,
                  [](Application& self, const Arguments&) { return ObjectValue(ActiveInspector(self)); })
            .Call(L"CreateItem", 1, 1,
                  [](Application& self, const Arguments& a) { return ObjectValue(CreateItem(self, a.Number(0))); });
    return members;
}

} // namespace

Application::Application(std::shared_ptr<Session> session) : Object(std::move(session), ApplicationClass()) {}

HRESULT Application::EnumConnectionPoints(IEnumConnectionPoints**) {
    return E_NOTIMPL;
}

HRESULT Application::FindConnectionPoint(REFIID interfaceId, IConnectionPoint** point) {
    if (point == nullptr) {
        return E_POINTER;
    }
    *point = nullptr;
    if (const HRESULT fault = RecordCall(Owner(), L"Application.FindConnectionPoint"); FAILED(fault)) {
        return fault;
    }
    if (interfaceId != kApplicationEventsId) {
        return CONNECT_E_NOCONNECTION;
    }
    *point = new ConnectionPoint(SharedOwner());
    return S_OK;
}

void* Application::OwnInterface(REFIID interfaceId) {
    if (interfaceId != IID_IConnectionPointContainer) {
        return nullptr;
    }
    AddRef();
    return static_cast<IConnectionPointContainer*>(this);
}

} // namespace stand_ins
