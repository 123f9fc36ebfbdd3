/* GNUstep's headers include this from compilers with blocks. GCC's Objective-C runtime has no such header. */
void* _Block_copy(const void* block);
void _Block_release(const void* block);
