/* Embeds the design image and the icon, each followed by a zero byte that its size does not count. */

    .section .rodata
    .macro embed name, file
    .globl \name
    .hidden \name
    .type \name, @object
    .balign 16
\name:
    .incbin "\file"
    .byte 0
    .size \name, . - \name
    .endm

    embed rawHapData, DESIGN_IMAGE_FILE
    embed appletIconData, APPLET_ICON_FILE

    .section .note.GNU-stack, "", @progbits
