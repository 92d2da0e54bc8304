// An engine module that lacks the tracer's exported pointer.
extern "C" int taviUnrelatedSymbol() { return 0; }
