// Only the libraries that it names are looked at.
int main() { return 0; }
