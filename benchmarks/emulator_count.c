/*
 * A plugin of qemu-arm and its kin: counts the instructions between system calls `getppid`, and writes to the
 * standard error at each how many there were, and how many of them in the library.
 *
 * The few declarations that it needs are its own, because the emulator's header is in no package.
 */
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef uint64_t PluginId;
typedef struct qemu_plugin_tb Block;
typedef struct qemu_plugin_insn Instruction;
typedef void (*OnTranslation)(PluginId id, Block* block);
typedef void (*OnSystemCall)(PluginId id, unsigned cpu, int64_t number, uint64_t a1, uint64_t a2, uint64_t a3,
                             uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8);
enum { addToCounter = 0 };
void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id, OnTranslation function);
void qemu_plugin_register_vcpu_syscall_cb(PluginId id, OnSystemCall function);
size_t qemu_plugin_tb_n_insns(const Block* block);
Instruction* qemu_plugin_tb_get_insn(const Block* block, size_t index);
void* qemu_plugin_insn_haddr(const Instruction* instruction);
void qemu_plugin_register_vcpu_tb_exec_inline(Block* block, int operation, void* counter, uint64_t value);

int qemu_plugin_version = 1;
int qemu_plugin_install(PluginId id, const void* info, int argc, char** argv);

static const int64_t getppidOfArm = 64;
/** What was executed since the last call, in the library and elsewhere. */
static uint64_t inLibrary;
static uint64_t elsewhere;

/** The part of the emulator's memory in which an address was found last, and whether the library is mapped
 * there. */
static uintptr_t begin;
static uintptr_t end;
static int isLibrary;

static int isInLibrary(uintptr_t address) {
    char line[4096];
    FILE* maps;
    if (address >= begin && address < end) {
        return isLibrary;
    }
    maps = fopen("/proc/self/maps", "r");
    while (maps != NULL && fgets(line, sizeof line, maps) != NULL) {
        if (sscanf(line, "%" SCNxPTR "-%" SCNxPTR, &begin, &end) == 2 && address >= begin && address < end) {
            isLibrary = strstr(line, "/libFrequencyHandler.so") != NULL;
            fclose(maps);
            return isLibrary;
        }
    }
    fprintf(stderr, "emulator_count: an instruction is executed that is nowhere\n");
    abort();
}

static void onTranslation(PluginId id, Block* block) {
    const uintptr_t address = (uintptr_t)qemu_plugin_insn_haddr(qemu_plugin_tb_get_insn(block, 0));
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(
        block, addToCounter, isInLibrary(address) ? &inLibrary : &elsewhere, qemu_plugin_tb_n_insns(block));
}

static void onSystemCall(PluginId id, unsigned cpu, int64_t number, uint64_t a1, uint64_t a2, uint64_t a3,
                         uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8) {
    (void)id, (void)cpu, (void)a1, (void)a2, (void)a3, (void)a4, (void)a5, (void)a6, (void)a7, (void)a8;
    if (number == getppidOfArm) {
        fprintf(stderr, "%" PRIu64 " %" PRIu64 "\n", inLibrary + elsewhere, inLibrary);
        inLibrary = 0;
        elsewhere = 0;
    }
}

int qemu_plugin_install(PluginId id, const void* info, int argc, char** argv) {
    (void)info, (void)argc, (void)argv;
    qemu_plugin_register_vcpu_tb_trans_cb(id, onTranslation);
    qemu_plugin_register_vcpu_syscall_cb(id, onSystemCall);
    return 0;
}
