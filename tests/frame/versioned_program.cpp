// A program that does nothing and carries a version resource, for the file version probe.
int main() {}
