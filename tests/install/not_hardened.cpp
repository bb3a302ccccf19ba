// A program that is linked without any of what ours are linked with: what the check of that must see.
int main() { return 0; }
