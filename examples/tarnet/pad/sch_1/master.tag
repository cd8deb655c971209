page1.txt
