// Two modules that a host must refuse: one without a table, one whose table has no end.

namespace {
void Handle() {}
}  // namespace

struct Row {
  const char* apiName;
  int version;
  const char* methodName;
  void (*handler)();
};

#ifdef WITH_TABLE
extern Row endlessTable[1];
Row endlessTable[1] = {{"Api", 1, "Method", Handle}};
extern "C" Row* GetAPITable() { return endlessTable; }
#else
extern Row table[1];
Row table[1] = {{"Api", 1, "Method", Handle}};
#endif
