// A library that would look for others in the folder that its program is started in.
int LooksAnywhere(void);
int LooksAnywhere(void) { return 1; }
