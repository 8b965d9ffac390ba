// A header that a careful caller's compiler complains about.
inline int Answer(int unused) { return 42; }
