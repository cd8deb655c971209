#header  profile=tran columns=3
#names   time,V(in),V(out)
0.000E+00,6.000E+00,5.207E+00
5.140E-05,6.106E+00,5.371E+00
1.164E-04,5.916E+00,5.035E+00
1.764E-04,6.106E+00,5.377E+00
#end
