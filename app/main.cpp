// Entry point of the engine (start-up and command loop land with the protocol layer).
int main() { return 0; }
