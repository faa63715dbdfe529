// The host agent's COM interfaces, as far as this component uses them. The host defines
// more operations than are called here; those are declared as placeholders so that every
// used operation keeps its slot in the table. Identifiers are plain constants usable with
// any compiler (no __uuidof).
#pragma once

#include "tarnix/Platform.h"

// {2D6D321D-3A1D-4BB9-9161-2191D701011D}: the class of the host's system service, known
// to the component only as text.
inline constexpr const WCHAR* kHostSystemServiceClassText =
    WSTR("{2D6D321D-3A1D-4BB9-9161-2191D701011D}");
inline constexpr CLSID CLSID_HostSystemService = {
    0x2D6D321D, 0x3A1D, 0x4BB9, {0x91, 0x61, 0x21, 0x91, 0xD7, 0x01, 0x01, 0x1D}};

inline constexpr IID IID_IHostSystemService = {
    0x92AFA5E6, 0x7B4C, 0x4B33, {0xBF, 0x40, 0xF6, 0x8E, 0x4D, 0xA7, 0x4A, 0xA5}};
inline constexpr IID IID_IHostLogger = {
    0xD320790B, 0xD7C2, 0x4757, {0xA1, 0xCA, 0x8C, 0x0F, 0x82, 0x97, 0x58, 0x45}};
inline constexpr IID IID_ISystemInfo = {
    0xAE7AFB5C, 0xDA85, 0x43BA, {0xBB, 0x7B, 0x9A, 0xAC, 0x30, 0xF2, 0x7E, 0x31}};
inline constexpr IID IID_IHostActionExecutor = {
    0x545A3670, 0x9230, 0x4402, {0x83, 0x8F, 0x4A, 0xC3, 0x88, 0x27, 0x0E, 0x6A}};
inline constexpr IID IID_IHostAuxiliaryService = {
    0xC0781D6C, 0x5265, 0x496A, {0x99, 0x33, 0xB1, 0x53, 0x92, 0x86, 0x4F, 0x81}};
inline constexpr IID IID_IHostNamedValues = {
    0x6AF5CC36, 0xC4D7, 0x4890, {0xAA, 0xE3, 0xA3, 0x9C, 0x31, 0x65, 0x4D, 0x5D}};

// The class the automation marshaller is registered under: the proxy/stub that makes the
// host's interfaces usable across apartments.
inline constexpr const WCHAR* kAutomationMarshallerClassText =
    WSTR("{00020424-0000-0000-C000-000000000046}");

// Publishes the host's services to in-process components.
struct IHostSystemService : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
  // Gives an object from which the interface `iid` can be queried.
  virtual HRESULT STDMETHODCALLTYPE GetService(REFIID iid, IUnknown** object) = 0;
};

// The host's log. Every call names the component that writes the line.
struct IHostLogger : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved7() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved8() = 0;
  virtual HRESULT STDMETHODCALLTYPE LogError(BSTR component, BSTR message) = 0;
  virtual HRESULT STDMETHODCALLTYPE LogWarning(BSTR component, BSTR message) = 0;
  virtual HRESULT STDMETHODCALLTYPE LogInfo(BSTR component, BSTR message) = 0;
  virtual HRESULT STDMETHODCALLTYPE LogLevel(BSTR component, LONG level, BSTR message) = 0;
};

struct IHostEnumerator;  // tarnix/DataInterfaces.h

// A collection of values looked up by name (the host's component identities, the items of
// extended data).
struct IHostNamedValues : public IUnknown {
  // Every (name, value) pair of the collection.
  virtual HRESULT STDMETHODCALLTYPE get_Enumerator(IHostEnumerator** items) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Item(BSTR name, VARIANT* value) = 0;
};

// What the host knows about the machine it runs on.
struct ISystemInfo : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Refresh() = 0;
  // A VT_RECORD array of adapter records, owned by the receiver.
  virtual HRESULT STDMETHODCALLTYPE get_networkInterfaces(SAFEARRAY** interfaces) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_machineName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
  // VARIANT_TRUE on a desktop; anything else is a server.
  virtual HRESULT STDMETHODCALLTYPE get_isDesktop(VARIANT_BOOL* desktop) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_FQDN(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_totalMemory(LONG* memory) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_virtualMachineId(BSTR* id) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_machineId(BSTR* id) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_uniqueId(BSTR* id) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_componentsIdentities(IHostNamedValues** identities) = 0;
};

// Carries an answer of the message server back into the host, per registration key.
struct IDataDumpCallback : public IUnknown {
  // `dataType` is the DataType of the call that was answered.
  virtual HRESULT STDMETHODCALLTYPE OnDataDumped(LONG dataType, BSTR text) = 0;
};

// Performs the actions the message server asks for.
struct IHostActionExecutor : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
  // The component passes 0, the action text as a VT_BSTR, and no result slot.
  virtual HRESULT STDMETHODCALLTYPE ExecuteAction(LONG flags, VARIANT action, VARIANT* result) = 0;
};

// A further host service the dispatch may ask for. None of its operations is called, so it
// is declared as its identity alone.
struct IHostAuxiliaryService : public IUnknown {};
