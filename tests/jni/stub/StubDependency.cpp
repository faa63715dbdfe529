// A library the stand-in runtime depends on, kept in the runtime's DLL folder: the stand-in
// loads only when that folder is the DLL search directory, as a real runtime does.
extern "C" __declspec(dllexport) int TarnixStub_Dependency() { return 7; }
