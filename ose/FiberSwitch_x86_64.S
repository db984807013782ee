/* Context switch of fibers on x86-64 (System V). Saves the callee-saved
   registers and the floating point control words on the old stack, stores the
   stack pointer, and restores the same from the new stack. */
#if defined(__x86_64__)
    .text
    .globl  ose_fiber_switch
    .type   ose_fiber_switch, @function
/* void ose_fiber_switch(void** saveSp, void* newSp) */
ose_fiber_switch:
    .cfi_startproc
    pushq   %rbp
    pushq   %rbx
    pushq   %r12
    pushq   %r13
    pushq   %r14
    pushq   %r15
    subq    $16, %rsp
    fnstcw  (%rsp)
    stmxcsr 8(%rsp)
    movq    %rsp, (%rdi)
    movq    %rsi, %rsp
    fldcw   (%rsp)
    ldmxcsr 8(%rsp)
    addq    $16, %rsp
    popq    %r15
    popq    %r14
    popq    %r13
    popq    %r12
    popq    %rbx
    popq    %rbp
    ret
    .cfi_endproc
    .size   ose_fiber_switch, .-ose_fiber_switch

    .globl  ose_fiber_trampoline
    .type   ose_fiber_trampoline, @function
/* First code of a fiber: calls entry(argument), kept in rbx and r12. The
   entry never returns. */
ose_fiber_trampoline:
    .cfi_startproc
    .cfi_undefined rip
    movq    %r12, %rdi
    callq   *%rbx
    ud2
    .cfi_endproc
    .size   ose_fiber_trampoline, .-ose_fiber_trampoline
#endif
    .section .note.GNU-stack, "", @progbits
