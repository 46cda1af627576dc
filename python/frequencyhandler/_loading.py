"""Looked at before the extension module is loaded, which would end the process, or never end."""

import ctypes

#: By an operation of the contracts and by one of its own, the platform that the module brings.
_OF_THE_CONTRACTS = "CInterfaceBroker_GetInstance"
_OF_THE_PLATFORM = "_ZN10Standalone13allOperationsEv"


def require_main_interpreter() -> None:
    """Raises ImportError in a subinterpreter: the module would wait there for the lock that its own importer holds."""
    main = ctypes.pythonapi.PyInterpreterState_Main
    this = ctypes.pythonapi.PyInterpreterState_Get
    main.restype = this.restype = ctypes.c_void_p
    if main() != this():
        raise ImportError("this is a subinterpreter, expected the main interpreter of the process: there is one radio in it",
                          name=__package__)


def require_own_platform() -> None:
    """Raises ImportError where something loaded before the interpreter, such as a recorder, stands between the library and its
    platform: it looks for that behind itself, where modules of Python are not found."""
    loaded = ctypes.CDLL(None)
    if hasattr(loaded, _OF_THE_CONTRACTS) and not hasattr(loaded, _OF_THE_PLATFORM):
        raise ImportError("a recorder or another platform was loaded before the interpreter, expected a process without "
                          "it (LD_PRELOAD)", name=__package__)
