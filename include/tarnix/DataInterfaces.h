// The host agent's data objects, as far as this component reads them: samples and their
// per-session instances, the enumerators that walk their contents, user sessions with
// their property boxes, and the network-adapter records of the system information. Only
// the operations called here are named; the others keep their slots as placeholders.
#pragma once

#include "tarnix/Platform.h"
#include "tarnix/HostInterfaces.h"

#include <cstddef>

// A sample (and each per-session instance of one).
inline constexpr IID IID_IHostSample = {
    0xC4FABE5D, 0x60DF, 0x4AE7, {0xA7, 0x35, 0x1D, 0xD5, 0x67, 0xCD, 0x2F, 0x2B}};
// A user session, as the data of the session events and as the host's sessions by id.
inline constexpr IID IID_IHostUserSession = {
    0x0F46AB8A, 0xA37C, 0x40CA, {0x95, 0x92, 0x2B, 0xF0, 0xF7, 0x18, 0xAC, 0x87}};
// The enumerator of (name, value) pairs; an extended metric's value answers it with the
// metric's instances.
inline constexpr IID IID_IHostEnumerator = {
    0xA570A90F, 0x11C1, 0x4935, {0x87, 0x88, 0xEA, 0xFB, 0x4D, 0x31, 0x15, 0xAA}};
// The host's sessions by id. The dispatch asks the host system service for it by the
// identifier of the fourth host service.
inline constexpr IID IID_IHostSessionSource = IID_IHostAuxiliaryService;

struct IHostSample;
struct IHostUserSession;

// Walks (name, value) pairs: metrics, properties, attributes, instances of an extended
// metric. Next answers S_OK while it delivered a pair; any other answer, success or
// failure, ends the walk. The caller frees the name and clears the value.
struct IHostEnumerator : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
  virtual HRESULT STDMETHODCALLTYPE Next(BSTR* name, VARIANT* value) = 0;
};

// The same host enumerator over a collection of objects (a sample's instances, an
// instance's remote applications): the item comes as an interface pointer that the caller
// releases. The host declares one enumerator; the item is typed here per collection.
struct IHostSampleEnumerator : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
  virtual HRESULT STDMETHODCALLTYPE Next(BSTR* key, IHostSample** item) = 0;
};

// One collection pass: its time, its metrics, one instance per user session, and named
// collections of further objects. Instances and remote applications answer the same
// operations.
struct IHostSample : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
  // An OLE date, taken as universal time.
  virtual HRESULT STDMETHODCALLTYPE get_time(DATE* time) = 0;
  // (session id as decimal text, instance) pairs.
  virtual HRESULT STDMETHODCALLTYPE get_instances(IHostSampleEnumerator** instances) = 0;
  // (name, value) pairs. The component always passes 1 for the host's flag.
  virtual HRESULT STDMETHODCALLTYPE get_metrics(LONG flag, IHostEnumerator** metrics) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved10() = 0;
  // The (key, object) pairs of a named collection, such as "remoteApps".
  virtual HRESULT STDMETHODCALLTYPE get_collection(BSTR name, IHostSampleEnumerator** items) = 0;
};

inline constexpr LONG kHostMetricsFlag = 1;

// The named properties of a user session.
struct IHostPropertyBox : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE get_enumerator(IHostEnumerator** properties) = 0;
};

struct IHostUserSession : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE get_propertyBox(IHostPropertyBox** box) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_id(LONG* id) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_sid(BSTR* sid) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_user(BSTR* user) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_domain(BSTR* domain) = 0;
  // The host's own boolean: 1 means connected (VARIANT_TRUE does not).
  virtual HRESULT STDMETHODCALLTYPE get_connected(VARIANT_BOOL* connected) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved9() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved10() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved11() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved12() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved13() = 0;
  // How the host names the user in its own messages.
  virtual HRESULT STDMETHODCALLTYPE get_userLabel(BSTR* label) = 0;
};

// The host's user sessions by id.
struct IHostSessionSource : public IUnknown {
  // Fails when the host has no session of that id.
  virtual HRESULT STDMETHODCALLTYPE GetSession(LONG id, IHostUserSession** session) = 0;
};

// One element of the VT_RECORD array that ISystemInfo::get_networkInterfaces hands out.
// The strings belong to the array.
struct HostNetworkInterfaceRecord {
  ULONGLONG reserved;  // the host's own; never read
  BSTR description;
  BSTR macAddress;
  BSTR ipAddress;
  BSTR subnetMask;
  BSTR subnet;
  LONG linkSpeed;
};
static_assert(sizeof(void*) != 8 || sizeof(HostNetworkInterfaceRecord) == 56,
              "the host's adapter record is 56 bytes on 64-bit Windows");
static_assert(offsetof(HostNetworkInterfaceRecord, description) == 8 &&
                  offsetof(HostNetworkInterfaceRecord, subnet) == 8 + 4 * sizeof(BSTR),
              "adapter record fields at the host's offsets");
