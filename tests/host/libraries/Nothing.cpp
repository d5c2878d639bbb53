// A library, but none of component types.
extern "C" int trelComponentsAbi();
int trelComponentsAbi() { return 1; }
