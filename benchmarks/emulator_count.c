/*
 * A plugin of qemu-arm and its kin: counts the instructions between system calls `getppid`, and writes how
 * many there were to the standard error at each.
 *
 * The few declarations that it needs are its own, because the emulator's header is in no package.
 */
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

typedef uint64_t PluginId;
typedef struct qemu_plugin_tb Block;
typedef void (*OnTranslation)(PluginId id, Block* block);
typedef void (*OnSystemCall)(PluginId id, unsigned cpu, int64_t number, uint64_t a1, uint64_t a2, uint64_t a3,
                             uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8);
enum { addToCounter = 0 };
void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id, OnTranslation function);
void qemu_plugin_register_vcpu_syscall_cb(PluginId id, OnSystemCall function);
size_t qemu_plugin_tb_n_insns(const Block* block);
void qemu_plugin_register_vcpu_tb_exec_inline(Block* block, int operation, void* counter, uint64_t value);

int qemu_plugin_version = 1;
int qemu_plugin_install(PluginId id, const void* info, int argc, char** argv);

static const int64_t getppidOfArm = 64;
static uint64_t executed;
static uint64_t atLastCall;

static void onTranslation(PluginId id, Block* block) {
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(block, addToCounter, &executed, qemu_plugin_tb_n_insns(block));
}

static void onSystemCall(PluginId id, unsigned cpu, int64_t number, uint64_t a1, uint64_t a2, uint64_t a3,
                         uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8) {
    (void)id, (void)cpu, (void)a1, (void)a2, (void)a3, (void)a4, (void)a5, (void)a6, (void)a7, (void)a8;
    if (number == getppidOfArm) {
        fprintf(stderr, "%" PRIu64 "\n", executed - atLastCall);
        atLastCall = executed;
    }
}

int qemu_plugin_install(PluginId id, const void* info, int argc, char** argv) {
    (void)info, (void)argc, (void)argv;
    qemu_plugin_register_vcpu_tb_trans_cb(id, onTranslation);
    qemu_plugin_register_vcpu_syscall_cb(id, onSystemCall);
    return 0;
}
