// Empty: its target is there for the precompiled headers.
