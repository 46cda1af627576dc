// What goes out to the platform: the storage manager and the calibration handler. Each operation leads to the
// next definition behind the recorder's, and calls of others than the library pass as they are.

#include "CCalibrationHandler.h"
#include "CStorageManager.h"
#include "Contents.h"
#include "Next.h"
#include "PlatformCalls.h"

#include <array>
#include <atomic>
#include <cstddef>

using namespace Recording;

namespace {

RECORDING_NEXT Next<EAFResult(const char*, StorageVariable**)>
    s_getVariable("CStorageManager_GetVariableByName");
RECORDING_NEXT Next<EAFResult(const char*, void**, int)>
    s_getAddress("CStorageManager_GetVariableContentAddressByName");

std::int32_t contentAt(const void* address) {
    return address != nullptr ? *static_cast<const std::int32_t*>(address) : 0;
}

} // namespace

EAFResult CStorageManager_GetVariableByName(const char* name, StorageVariable** out) {
    if (!isFromLibrary(__builtin_return_address(0)) || out == nullptr) {
        return s_getVariable(name, out);
    }
    Entry entry{Kind::variableGet, nameOf(ObjectKind::variable, name)};
    const EAFResult code = outgoing(entry, [&] { return s_getVariable(name, out); });
    entry.code = code;
    if (isSuccess(code) && *out != nullptr) {
        entry.a = 1;
        entry.b = (*out)->content != nullptr ? 1 : 0;
        entry.c = contentAt((*out)->content);
    }
    Recorder::write(entry);
    return code;
}

EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** contentAddress,
                                                          int reserved) {
    if (!isFromLibrary(__builtin_return_address(0)) || contentAddress == nullptr || name == nullptr) {
        return s_getAddress(name, contentAddress, reserved);
    }
    Entry entry{Kind::variableAddress, nameOf(ObjectKind::variable, name)};
    entry.c = reserved;
    const EAFResult code = outgoing(entry, [&] { return s_getAddress(name, contentAddress, reserved); });
    entry.code = code;
    const void* const address = isSuccess(code) ? *contentAddress : nullptr;
    entry.a = address != nullptr ? 1 : 0;
    entry.b = isArray(name) ? 0 : contentAt(address);
    Recorder::write(entry);
    Contents::watch(entry.object, name, t_thread.object, address);
    return code;
}

// Calibration handler

namespace {

RECORDING_NEXT Next<ECHResult(const char*, CalibrationTableHandle*)>
    s_getTable("CCalibrationHandler_GetTable");
RECORDING_NEXT Next<ECHResult(CalibrationTableHandle, int, int*)>
    s_linear("CCalibrationTable_LinearInterpolate");
RECORDING_NEXT Next<ECHResult(CalibrationTableHandle, int, int, int*)>
    s_bilinear("CCalibrationTable_BiLinearInterpolate");

/** Which table a handle stands for: the one with which it was last given. */
struct Handle {
    std::atomic<CalibrationTableHandle> handle;
    std::atomic<std::uint16_t> table;
};
std::array<Handle, 1024> s_handles;

/** Its place, or the free one where it would be. */
Handle* placeOf(CalibrationTableHandle handle) {
    const std::size_t begin = reinterpret_cast<std::uintptr_t>(handle) / alignof(std::max_align_t);
    for (std::size_t step = 0; step < s_handles.size(); ++step) {
        Handle& place = s_handles[(begin + step) % s_handles.size()];
        CalibrationTable* const there = place.handle.load(std::memory_order_relaxed);
        if (there == handle || there == nullptr) {
            return &place;
        }
    }
    return nullptr;
}

std::uint16_t tableOf(CalibrationTableHandle handle) {
    const Handle* const place = handle != nullptr ? placeOf(handle) : nullptr;
    return place != nullptr ? place->table.load(std::memory_order_relaxed) : std::uint16_t{0};
}

void keepHandle(CalibrationTableHandle handle, std::uint16_t table) {
    Handle* const place = placeOf(handle);
    if (place == nullptr) {
        Recorder::passOver();
        return;
    }
    place->table.store(table, std::memory_order_relaxed);
    place->handle.store(handle, std::memory_order_release);
}

} // namespace

ECHResult CCalibrationHandler_GetTable(const char* tableName, CalibrationTableHandle* out) {
    if (!isFromLibrary(__builtin_return_address(0)) || out == nullptr) {
        return s_getTable(tableName, out);
    }
    Entry entry{Kind::tableLookup, nameOf(ObjectKind::table, tableName)};
    const ECHResult code = outgoing(entry, [&] { return s_getTable(tableName, out); });
    entry.code = code;
    entry.a = isSuccess(code) && *out != nullptr ? 1 : 0;
    if (entry.a != 0) {
        keepHandle(*out, entry.object);
    }
    Recorder::write(entry);
    return code;
}

ECHResult CCalibrationTable_LinearInterpolate(CalibrationTableHandle table, int x, int* y) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_linear(table, x, y);
    }
    Entry entry{Kind::tableLinear, tableOf(table), 0, x, 0, y != nullptr ? *y : 0};
    const ECHResult code = outgoing(entry, [&] { return s_linear(table, x, y); });
    entry.code = code;
    entry.b = y != nullptr ? *y : 0;
    Recorder::write(entry);
    return code;
}

ECHResult CCalibrationTable_BiLinearInterpolate(CalibrationTableHandle table, int x1, int x2, int* y) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_bilinear(table, x1, x2, y);
    }
    Entry entry{Kind::tableBilinear, tableOf(table), 0, x1, x2, 0, y != nullptr ? *y : 0};
    const ECHResult code = outgoing(entry, [&] { return s_bilinear(table, x1, x2, y); });
    entry.code = code;
    entry.c = y != nullptr ? *y : 0;
    Recorder::write(entry);
    return code;
}
